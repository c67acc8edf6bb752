#include "AppFixture.h"

using namespace kestrune;
using namespace kestrune::testing;
using namespace kestrune::dbwriter;

// Selecting a device loads its database; deselecting clears; failures become messages.
class TestLoading : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void loadTicksOrdinaryPlaylistsAndShowsFirst()
    {
        AppFixture fixture;
        const QString root = fixture.addIPod("IPOD");
        AppViewModel &model = fixture.startLoaded();
        QCOMPARE(model.tracks().size(), 3);
        QCOMPARE(fixture.selectedNames(), (QStringList{"Road Trip", "Chill", "Empty"}));
        QCOMPARE(model.activeDetailPlaylist()->name, "Road Trip");
        QCOMPARE(model.options().destinationFolder, std::optional(QUrl::fromLocalFile(root + "/Playlists")));
        QCOMPARE(fixture.playlist("Road Trip").tracks.size(), 2);
        QCOMPARE(model.loadingPercent(), 100);
    }

    void failuresBecomeMessages_data()
    {
        QTest::addColumn<QByteArray>("database"); // empty: no database file at all
        QTest::addColumn<QString>("message");
        QTest::addRow("missing") << QByteArray() << "iTunesDB";
        QTest::addRow("not a database") << QByteArray(40, 'x')
                                        << "File non valido: intestazione iTunesDB ('mhbd') mancante o corrotta.";
    }

    void failuresBecomeMessages()
    {
        QFETCH(QByteArray, database);
        QFETCH(QString, message);
        AppFixture fixture;
        const QString root = fixture.addIPod("IPOD");
        AppViewModel &model = fixture.startLoaded();
        if (database.isEmpty())
            QFile::remove(root + "/iPod_Control/iTunes/iTunesDB");
        else
            writeFile(root + "/iPod_Control/iTunes/iTunesDB", database);
        model.loadDatabase(*model.detector()->selectedDevice());
        QTRY_VERIFY(!model.isLoading());
        QVERIFY2(model.errorMessage().value_or(QString()).contains(message), qPrintable(model.errorMessage().value_or("")));
        QVERIFY(model.playlists().isEmpty() && model.tracks().isEmpty() && model.currentDirectoryItems().isEmpty());
        QVERIFY(model.libraryUnreadable());
    }

    void everyAssignmentIsAnnounced()
    {
        AppFixture fixture;
        const QString root = fixture.addIPod("IPOD");
        AppViewModel &model = fixture.startLoaded();
        model.deselectAllPlaylists();
        model.selectDevice(7); // no such device: nothing happens
        // Choosing the device that is already selected loads it again, ticks included.
        model.selectDevice(model.selectedDeviceIndex());
        QTRY_COMPARE(model.tickedPlaylistCount(), 3);
        // A rescan that finds no device clears what a device left, an earlier message too.
        model.setErrorMessage(QStringLiteral("stale"));
        QDir(root).removeRecursively();
        model.rescanDevices();
        QTRY_VERIFY(model.playlists().isEmpty());
        QVERIFY(model.currentDirectoryItems().isEmpty());
        QCOMPARE(model.errorMessage(), std::nullopt);
        fixture.settle();
        QSignalSpy cleared(&model, &AppViewModel::playlistsChanged);
        model.rescanDevices(); // none again: still announced, still cleared
        QTRY_COMPARE(cleared.count(), 1);
    }

    void playerWarningsFollowTheLoad()
    {
        AppFixture fixture;
        const QString root = fixture.addIPod("IPOD");
        writeFile(root + "/.rockbox/rockbox-info.txt", "Target: ipod6g\n");
        writeFile(root + "/iPod_Control/Music/F00/A.mp3", "music"); // Road Trip's B.mp3 is missing
        AppViewModel &model = fixture.startLoaded();
        QTRY_COMPARE(model.rockboxTarget(), "ipod6g");
        QCOMPARE(model.playlistLimit(), 10000);
        const QList<PlaylistWarning> warnings = model.playlistWarnings().value(fixture.playlist("Road Trip").id);
        QCOMPARE(warnings, (QList<PlaylistWarning>{{"Road Trip", PlaylistWarning::Kind::missingFiles, 1, 0}}));
        const QVariantList shown = model.filteredPlaylistsModel()->index(0, 0).data(PlaylistListModel::WarningsRole).toList();
        QCOMPARE(shown.size(), 1);
        QCOMPARE(shown.first().toMap().value("kind").toString(), "missingFiles");
    }

    void volumeWithoutUtf8NamesIsFlagged()
    {
        AppFixture fixture;
        const QString root = fixture.addIPod("IPOD");
        fixture.mountLine = "36 25 8:17 / " + root.toUtf8() + " rw - vfat /dev/sdb1 rw,codepage=437,iocharset=iso8859-1";
        AppViewModel &model = fixture.startLoaded();
        QVERIFY(model.destinationLacksUtf8Names());
        model.detector()->setSelectedDevice(std::nullopt);
        model.setOptions({}); // no folder to write to: nothing to say about one
        QVERIFY(!model.destinationLacksUtf8Names());
    }
};

QTEST_GUILESS_MAIN(TestLoading)
#include "tst_loading.moc"
