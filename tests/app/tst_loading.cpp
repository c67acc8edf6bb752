#include "AppFixture.h"

using namespace kestrune;
using namespace kestrune::testing;
using namespace kestrune::dbwriter;

// Selecting a device loads its database; deselecting clears; failures become messages.
class TestLoading : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initialState();
    void loadTicksOrdinaryPlaylistsAndShowsFirst();
    void loadRulesForSmallDatabases_data();
    void loadRulesForSmallDatabases();
    void existingFilesAreMatched();
    void missingDatabaseIsReported();
    void unreadableDatabaseIsReported();
    void deselectionClearsButKeepsStatus();
    void deviceFolderReplacesChosenDestination();
};

void TestLoading::initialState()
{
    AppFixture fixture;
    AppViewModel &model = fixture.start();
    QVERIFY(model.playlists().isEmpty());
    QCOMPARE(model.searchText(), QString());
    QVERIFY(model.hideMasterPlaylist());
    QVERIFY(!model.onlySmartPlaylists());
    QCOMPARE(model.options(), ConversionOptions());
    QCOMPARE(model.conversionProgress(), 0.0);
    QCOMPARE(model.errorMessage(), std::nullopt);
    QCOMPARE(model.playlistsBaseFolderURL(), std::nullopt);
    QCOMPARE(model.languageManager(), fixture.language.get());
}

void TestLoading::loadTicksOrdinaryPlaylistsAndShowsFirst()
{
    AppFixture fixture;
    const QString root = fixture.addIPod("IPOD");
    AppViewModel &model = fixture.startLoaded();
    QCOMPARE(model.tracks().size(), 3);
    QCOMPARE(fixture.selectedNames(), (QStringList{"Road Trip", "Chill", "Empty"}));
    QCOMPARE(model.activeDetailPlaylist()->name, "Road Trip");
    QCOMPARE(model.options().destinationFolder, std::optional(QUrl::fromLocalFile(root + "/Playlists")));
    QCOMPARE(fixture.playlist("Road Trip").tracks.size(), 2);
    QCOMPARE(model.filteredPlaylistsModel()->rowCount(), 3); // the master is hidden
}

void TestLoading::loadRulesForSmallDatabases_data()
{
    QTest::addColumn<QByteArray>("database");
    QTest::addColumn<int>("playlists");
    QTest::addColumn<QString>("active");
    QTest::addRow("master only") << ITunesDBWriter().addPlaylist({.name = QString("Library"), .isMaster = true}).build()
                                 << 1 << "Library";
    QTest::addRow("no playlists") << ITunesDBWriter().build() << 0 << "";
}

void TestLoading::loadRulesForSmallDatabases()
{
    QFETCH(QByteArray, database);
    QFETCH(int, playlists);
    QFETCH(QString, active);
    AppFixture fixture;
    fixture.addIPod("IPOD", database);
    AppViewModel &model = fixture.start();
    QTRY_VERIFY(!model.isLoading() && model.tracks().isEmpty() && model.options().destinationFolder);
    QTRY_COMPARE(model.playlists().size(), playlists);
    QVERIFY(model.selectedPlaylistIds().isEmpty());
    QCOMPARE(model.activeDetailPlaylist() ? model.activeDetailPlaylist()->name : QString(), active);
}

void TestLoading::existingFilesAreMatched()
{
    AppFixture fixture;
    const QString root = fixture.addIPod("IPOD");
    writeFile(root + "/Playlists/road trip.m3u8", "x");
    writeFile(root + "/Playlists/Road Trip.m3u", "x"); // sorts first, so it is the one attached
    writeFile(root + "/Playlists/Other.m3u8", "x");
    AppViewModel &model = fixture.startLoaded();
    QCOMPARE(fixture.playlist("Road Trip").existingRockboxFile->filename, "Road Trip.m3u");
    QVERIFY(!fixture.playlist("Chill").existingRockboxFile);
    QCOMPARE(model.existingRockboxFiles().size(), 3);
    QCOMPARE(model.currentDirectoryItems().size(), 3);
    QCOMPARE(model.filteredPlaylistsModel()->index(0, 0).data(PlaylistListModel::IsOnRockboxRole).toBool(), true);
}

void TestLoading::missingDatabaseIsReported()
{
    AppFixture fixture;
    const QString root = fixture.addIPod("IPOD");
    AppViewModel &model = fixture.start();
    QTRY_COMPARE(model.playlists().size(), 4);
    QFile::remove(root + "/iPod_Control/iTunes/iTunesDB");
    model.loadDatabase(*model.detector()->selectedDevice());
    QTRY_VERIFY(!model.isLoading());
    QVERIFY(model.errorMessage()->contains("iTunesDB"));
    QVERIFY(model.playlists().isEmpty());
    QVERIFY(model.tracks().isEmpty());
    QVERIFY(model.currentDirectoryItems().isEmpty());
}

void TestLoading::unreadableDatabaseIsReported()
{
    AppFixture fixture;
    fixture.addIPod("IPOD", QByteArray(40, 'x'));
    AppViewModel &model = fixture.start();
    QTRY_COMPARE(model.errorMessage(),
                 std::optional<QString>("File non valido: intestazione iTunesDB ('mhbd') mancante o corrotta."));
    QVERIFY(!model.isLoading());
}

void TestLoading::deselectionClearsButKeepsStatus()
{
    AppFixture fixture;
    fixture.addIPod("IPOD");
    AppViewModel &model = fixture.startLoaded();
    model.applyPendingChanges(); // sets the status message
    QCOMPARE(model.statusMessage(), std::optional<QString>("Modifiche applicate con successo su disco!"));
    model.setSearchText("road");
    QSignalSpy playlistsChanged(&model, &AppViewModel::playlistsChanged);
    model.detector()->setSelectedDevice(std::nullopt);
    QTRY_COMPARE(playlistsChanged.count(), 1);
    QVERIFY(model.playlists().isEmpty());
    QVERIFY(model.selectedPlaylistIds().isEmpty());
    QVERIFY(model.selectedFileItemIds().isEmpty());
    QCOMPARE(model.activeDetailPlaylist(), std::nullopt);
    QCOMPARE(model.statusMessage(), std::optional<QString>("Modifiche applicate con successo su disco!"));
    QCOMPARE(model.searchText(), "road");
}

void TestLoading::deviceFolderReplacesChosenDestination()
{
    AppFixture fixture;
    fixture.addIPod("A");
    AppViewModel &model = fixture.startLoaded();
    QTemporaryDir elsewhere;
    fixture.picker->answers = {QUrl::fromLocalFile(elsewhere.path())};
    model.pickDestinationFolder();
    QCOMPARE(model.playlistsBaseFolderURL(), std::optional(QUrl::fromLocalFile(elsewhere.path())));

    const QString b = fixture.addIPod("B");
    model.detector()->setSelectedDevice(model.detector()->inspectLocation(QUrl::fromLocalFile(b)));
    QTRY_COMPARE(model.options().destinationFolder, std::optional(QUrl::fromLocalFile(b + "/Playlists")));
}

QTEST_GUILESS_MAIN(TestLoading)
#include "tst_loading.moc"
