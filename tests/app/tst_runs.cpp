#include "AppFixture.h"

#include "export/DeviceLock.h"
#include "export/PlaylistWriteBatch.h"

#include <QAbstractItemModelTester>
#include <QProcess>
#include <QtEndian>

using namespace kestrune;
using namespace kestrune::testing;
using namespace kestrune::dbwriter;

namespace {

QStringList fileNames(const AppViewModel &model)
{
    QStringList names;
    for (const RockboxFileItem &item : model.currentDirectoryItems())
        names.append(item.name);
    return names;
}

} // namespace

// The conversion run, the Rockbox folder with its staged deletions, the folder pickers, and a full cycle
// that changes only what it should. (Device faults: tests/fat32, on a real FAT32 volume.)
class TestRuns : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void conversionReportsProgressAndResults()
    {
        AppFixture fixture;
        const QString root = fixture.addIPod("IPOD");
        writeFile(root + "/Playlists/._junk", "x");
        AppViewModel &model = fixture.startLoaded();
        model.setOnlySmartPlaylists(true); // ticked playlists are exported, hidden or not
        model.setSearchText("zzz");
        model.setCleanDotFiles(false);
        QList<double> progress;
        connect(&model, &AppViewModel::conversionProgressChanged, &model,
                [&] { progress.append(model.conversionProgress()); });
        QSignalSpy feedback(&model, &AppViewModel::conversionSuccessFeedbackChanged);
        model.setShowExportSummary(true);
        model.convertSelectedPlaylists();
        QVERIFY(model.isConverting());
        QTRY_VERIFY(!model.isConverting());
        QCOMPARE(progress, (QList<double>{0.0, 1.0 / 3.0, 2.0 / 3.0, 1.0}));
        QStringList names;
        for (const ExportItemResult &result : model.exportResults())
            names.append(result.playlistName);
        QCOMPARE(names, (QStringList{"Road Trip", "Chill", "Empty"}));
        QVERIFY(model.conversionSuccessFeedback() && !model.showExportSummary());
        QTRY_COMPARE(fileNames(model), (QStringList{"Chill.m3u8", "Empty.m3u8", "Road Trip.m3u8"}));
        QVERIFY(fixture.playlist("Road Trip").existingRockboxFile); // the marks follow the new files
        QTRY_VERIFY(!model.conversionSuccessFeedback());
        QCOMPARE(feedback.count(), 2);
        QVERIFY(QFileInfo::exists(root + "/Playlists/._junk"));
        model.setCleanDotFiles(true);
        model.convertSelectedPlaylists();
        QTRY_VERIFY(!model.isConverting());
        QVERIFY(!QFileInfo::exists(root + "/Playlists/._junk"));
    }

    // With the option on, the covers follow the playlists in the same run: one summary row in the results.
    void albumArtFollowsThePlaylists()
    {
        AppFixture fixture;
        TrackItem track = TrackItem::song(1, "Northbound", "Lanterns", ":iPod_Control:Music:F00:A.mp3");
        track.dbId = 5;
        track.strings.append(StringObject::utf16(3, "Open Roads"));
        const QString root = fixture.addIPod("IPOD", ITunesDBWriter().addTrack(track).addPlaylist(PlaylistItem::of("Road Trip", {1})).build());
        ArtworkWriter artwork;
        artwork.addImage(5, {{1029, 200, 200, ArtworkWriter::Picture::filled(200, 200, [](int x, int y) { return quint16(x * y); })}});
        writeFile(root + "/iPod_Control/Artwork/ArtworkDB", artwork.database());
        writeFile(root + "/iPod_Control/Artwork/F1029_1.ithmb", artwork.thumbnailFiles().first());
        QDir().mkpath(root + "/.rockbox");
        AppViewModel &model = fixture.startLoaded(1);
        model.setExportAlbumArt(true);
        model.convertSelectedPlaylists();
        QTRY_VERIFY(!model.isConverting());
        QCOMPARE(model.conversionProgress(), 1.0);
        QStringList names;
        for (const ExportItemResult &result : model.exportResults())
            names.append(result.playlistName + (result.isSuccess ? "" : " failed"));
        QCOMPARE(names, (QStringList{"Road Trip", "1 copertine"}));
        QVERIFY(QFileInfo::exists(root + "/.rockbox/albumart/Lanterns-Open Roads.jpg"));
    }

    // Success is raised only when every playlist is on the device; otherwise the results open by
    // themselves. The system refuses the writes: an immutable file or folder, which root cannot write either.
    void resultsAreHonest_data()
    {
        QTest::addColumn<QString>("immutable"); // below the iPod, or empty
        QTest::addColumn<QStringList>("failed");
        QTest::addRow("every playlist written") << "" << QStringList{};
        QTest::addRow("one file refused") << "Playlists/Chill.m3u8" << QStringList{"Chill"};
        QTest::addRow("the folder refused") << "Playlists" << QStringList{"Road Trip", "Chill", "Empty"};
    }
    void resultsAreHonest()
    {
        QFETCH(QString, immutable);
        QFETCH(QStringList, failed);
        AppFixture fixture;
        const QString root = fixture.addIPod("IPOD");
        writeFile(root + "/Playlists/Chill.m3u8", "#EXTM3U\n");
        const auto setImmutable = [&](bool on) {
            return immutable.isEmpty() || QProcess::execute("chattr", {on ? "+i" : "-i", root + '/' + immutable}) == 0;
        };
        if (!setImmutable(true))
            QSKIP("chattr +i needs root and a file system that has the flag");
        AppViewModel &model = fixture.startLoaded();
        model.convertSelectedPlaylists();
        QTRY_VERIFY(!model.isConverting());
        setImmutable(false);
        QStringList failures;
        for (const ExportItemResult &result : model.exportResults()) {
            if (!result.isSuccess)
                failures.append(result.playlistName);
        }
        QCOMPARE(failures, failed);
        QCOMPARE(model.showExportSummary(), !failed.isEmpty());
        QCOMPARE(model.conversionSuccessFeedback(), failed.isEmpty());
    }

    // A database cut short (it declares more than the file holds) replaces an existing file only once the
    // user confirms; Cancel runs nothing.
    void incompleteLibraryAsksBeforeReplacing()
    {
        AppFixture fixture;
        QByteArray database = sampleDatabase();
        qToLittleEndian(quint32(database.size() + 4096), database.data() + 8); // the length the header declares
        const QString root = fixture.addIPod("IPOD", database);
        writeFile(root + "/Playlists/Chill.m3u8", "#EXTM3U\nthe good old file\n");
        AppViewModel &model = fixture.startLoaded();
        QCOMPARE(model.libraryIncompleteness(), (QVariantMap{{"claimed", database.size() + 4096}, {"present", database.size()}}));
        model.convertSelectedPlaylists();
        QCOMPARE(model.replaceConfirmation(), (QVariantList{QVariantMap{{"name", "Chill.m3u8"}}}));
        model.cancelReplacements();
        fixture.settle();
        QVERIFY(!model.isConverting() && !QFileInfo::exists(root + "/Playlists/Road Trip.m3u8"));
        QCOMPARE(readFile(root + "/Playlists/Chill.m3u8"), "#EXTM3U\nthe good old file\n");
        model.convertSelectedPlaylists();
        model.confirmReplacements();
        QTRY_VERIFY(!model.isConverting());
        QVERIFY(readFile(root + "/Playlists/Chill.m3u8").contains("C.mp3"));
        QVERIFY(model.conversionSuccessFeedback());
    }

    // Cancelled at once: the playlists not yet in place are reported unwritten and are not on the device.
    void cancelledRunSaysWhatWasNotWritten()
    {
        AppFixture fixture;
        ITunesDBWriter writer;
        QList<quint32> ids;
        for (quint32 id = 1; id <= 200; ++id) {
            writer.addTrack(TrackItem::song(id, QString("Song %1").arg(id), "Band", QString(":iPod_Control:Music:F00:S%1.mp3").arg(id)));
            ids.append(id);
        }
        for (int n = 0; n < 300; ++n)
            writer.addPlaylist(PlaylistItem::of(QString("Mix %1").arg(n), ids));
        const QString root = fixture.addIPod("IPOD", writer.build());
        AppViewModel &model = fixture.startLoaded(300);
        model.convertSelectedPlaylists();
        model.cancelConversion();
        QTRY_VERIFY(!model.isConverting());
        qsizetype unwritten = 0;
        for (const ExportItemResult &result : model.exportResults()) {
            QCOMPARE(QFileInfo::exists(root + "/Playlists/" + result.filename), result.isSuccess);
            unwritten += result.errorMessage == PlaylistWriteBatch::interruptedReason() ? 1 : 0;
        }
        QVERIFY(unwritten > 0);
        QVERIFY(model.showExportSummary() && !model.conversionSuccessFeedback());
    }

    // A run that cannot start says why, writes nothing and raises no success.
    void runsThatCannotStart_data()
    {
        QTest::addColumn<QString>("obstacle");
        QTest::addColumn<QString>("message");
        QTest::addRow("nothing ticked") << "untick" << "Seleziona almeno una playlist da convertire.";
        QTest::addRow("a prefix with a line feed") << "prefix" << "carattere di controllo U+000A (line feed)";
        QTest::addRow("another run holds the device") << "lock" << " is busy: tst_runs (pid ";
    }

    void runsThatCannotStart()
    {
        QFETCH(QString, obstacle);
        QFETCH(QString, message);
        AppFixture fixture;
        const QString root = fixture.addIPod("IPOD");
        AppViewModel &model = fixture.startLoaded();
        const QMap<QString, QByteArray> before = snapshotTree(root);
        if (obstacle == "untick") {
            model.deselectAllPlaylists();
            model.togglePlaylistSelection("an id that no playlist has");
        }
        if (obstacle == "prefix")
            model.setCustomPathPrefix("/mnt\nipod");
        const std::variant<DeviceLock, QString> held =
            DeviceLock::acquire(DeviceFolder::open(obstacle == "lock" ? root : QDir::tempPath()), std::chrono::milliseconds(0));
        QVERIFY(std::holds_alternative<DeviceLock>(held));
        QSignalSpy feedback(&model, &AppViewModel::conversionSuccessFeedbackChanged);
        model.convertSelectedPlaylists();
        QTRY_VERIFY(!model.isConverting());
        QVERIFY2(model.errorMessage().value_or("").contains(message), qPrintable(model.errorMessage().value_or("")));
        QVERIFY(model.exportResults().isEmpty() && feedback.isEmpty());
        QCOMPARE(snapshotTree(root), before);
    }

    void stageDiscardAndApply()
    {
        AppFixture fixture;
        const QString root = fixture.addIPod("IPOD");
        writeFile(root + "/Playlists/a.m3u8", "x");
        writeFile(root + "/Playlists/b.m3u", "x");
        writeFile(root + "/Playlists/road trip.m3u8", "x");
        AppViewModel &model = fixture.startLoaded();
        new QAbstractItemModelTester(model.pendingActionsModel(), QAbstractItemModelTester::FailureReportingMode::QtTest, &model);
        QVERIFY(fixture.playlist("Road Trip").existingRockboxFile);

        model.stageDelete({model.currentDirectoryItems().at(0), model.currentDirectoryItems().at(1)});
        QCOMPARE(model.pendingActions().value(1).description, "Elimina playlist 'b.m3u'");
        model.discardPendingActions();
        QVERIFY(model.pendingActions().isEmpty() && fileNames(model).size() == 3);

        model.clickFileRow(2, {}); // road trip.m3u8
        model.stageSelectedFiles();
        model.stageFileRow(0);
        model.applyPendingChanges();
        QVERIFY(model.pendingActions().isEmpty() && model.selectedFileItemIds().isEmpty());
        QCOMPARE(model.statusMessage(), std::optional<QString>("Modifiche applicate con successo su disco!"));
        QTRY_COMPARE(fileNames(model), QStringList{"b.m3u"});
        QVERIFY(!fixture.playlist("Road Trip").existingRockboxFile); // its mark went with the file
    }

    void applyReportsFilesThatCouldNotBeRemoved()
    {
        AppFixture fixture;
        const QString root = fixture.addIPod("IPOD");
        writeFile(root + "/Playlists/gone.m3u8", "x");
        writeFile(root + "/Playlists/kept.m3u8", "x");
        AppViewModel &model = fixture.startLoaded();
        model.selectAllPlaylistFiles();
        model.stageSelectedFiles();
        QFile::remove(root + "/Playlists/gone.m3u8"); // removed outside the program
        model.applyPendingChanges();
        QVERIFY(!QFileInfo::exists(root + "/Playlists/kept.m3u8"));
        const QString error = model.errorMessage().value_or(QString());
        QVERIFY2(error.startsWith("Errore nell'eliminazione di 'gone.m3u8': "), qPrintable(error));
        QVERIFY(!error.contains('\n'));
        QCOMPARE(model.statusMessage(), std::nullopt);
        QVERIFY(model.pendingActions().isEmpty());
        QVERIFY(model.selectedFileItemIds().isEmpty());
    }

    void pickers()
    {
        AppFixture fixture;
        AppViewModel &model = fixture.start();
        QTemporaryDir elsewhere;
        const QString backup = elsewhere.filePath("Backup");

        writeFile(backup + "/iPod_Control/iTunes/iTunesDB", sampleDatabase());
        fixture.picker->answers = {QUrl::fromLocalFile(backup)};
        model.pickCustomFolder();
        fixture.settle(); // the selection starts a second load of the same folder
        QCOMPARE(model.playlists().size(), 4);
        QCOMPARE(model.detector()->selectedDevice()->name, "Backup");
        QCOMPARE(model.errorMessage(), std::nullopt);

        const QString destination = elsewhere.filePath("Out");
        writeFile(destination + "/Existing.m3u8", "x");
        fixture.picker->answers = {QUrl::fromLocalFile(destination)};
        model.pickDestinationFolder();
        QVERIFY(fixture.picker->requests.last().canCreateFolders);
        QTRY_COMPARE(fileNames(model), QStringList{"Existing.m3u8"});
        model.convertSelectedPlaylists();
        QTRY_VERIFY(!model.isConverting());
        QVERIFY(QFileInfo::exists(destination + "/Road Trip.m3u8"));
    }

    void fullCycleChangesOnlyExpectedPaths()
    {
        AppFixture fixture;
        const QString root = fixture.addIPod("IPOD");
        writeFile(root + "/iPod_Control/Music/F00/A.mp3", "music");
        writeFile(root + "/iPod_Control/Music/F00/._A.mp3", "junk beside the music");
        writeFile(root + "/.rockbox/config.cfg", "volume: -25");
        writeFile(root + "/.DS_Store", "junk at the root");
        writeFile(root + "/Playlists/Old.m3u8", "to be deleted");
        writeFile(root + "/Playlists/Keep.m3u", "kept");
        writeFile(root + "/Playlists/road trip.m3u8", "updated in place? no: another name");
        writeFile(root + "/Playlists/._Old.m3u8", "junk");
        writeFile(root + "/Playlists/.rockbox/x", "spared");
    #ifndef Q_OS_WIN
        QTemporaryDir outside;
        writeFile(outside.filePath("._precious"), "not ours");
        QVERIFY(QFile::link(outside.path(), root + "/Playlists/linked"));
    #endif
        const QMap<QString, QByteArray> before = snapshotTree(root);

        AppViewModel &model = fixture.startLoaded();
        model.convertSelectedPlaylists();
        QTRY_VERIFY(!model.isConverting());
        QTRY_COMPARE(model.currentDirectoryItems().size(), 6);
        const auto old = std::find_if(model.currentDirectoryItems().cbegin(), model.currentDirectoryItems().cend(),
                                      [](const RockboxFileItem &item) { return item.name == "Old.m3u8"; });
        QVERIFY(old != model.currentDirectoryItems().cend());
        model.stageDelete({*old});
        model.applyPendingChanges();
        QTRY_COMPARE(model.currentDirectoryItems().size(), 5);

        QMap<QString, QByteArray> expected = before;
        expected.remove("Playlists/Old.m3u8");  // staged and applied
        expected.remove("Playlists/._Old.m3u8"); // a dot file of the playlists folder
        const QMap<QString, QByteArray> after = snapshotTree(root);
        for (const char *written : {"Playlists/Road Trip.m3u8", "Playlists/Chill.m3u8", "Playlists/Empty.m3u8",
                                    ".rockbox/kestrune-record.json"}) {
            QVERIFY2(after.contains(written), qPrintable(written));
            expected.insert(written, after.value(written));
        }
        QCOMPARE(after, expected);
    #ifndef Q_OS_WIN
        QCOMPARE(readFile(outside.filePath("._precious")), QByteArray("not ours"));
    #endif
    }
};

QTEST_GUILESS_MAIN(TestRuns)
#include "tst_runs.moc"
