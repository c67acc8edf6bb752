#include "core/ITunesDBParser.h"
#include "core/OnTheGoPlaylists.h"
#include "core/PlayCounts.h"
#include "core/PlaylistFolders.h"
#include "dbwriter/ITunesDBWriter.h"
#include "support/TestFiles.h"

#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;
using namespace kestrune::dbwriter;
using namespace kestrune::testing;

using PlayCountList = std::optional<QList<PlayCountEntry>>;

// What lives beside the database's own lists: playlist folders, and the On-The-Go playlists and play counts
// the iPod keeps until the next sync.
class TestExtraPlaylists : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void folderPathsAndFlattening()
    {
        const QList<Playlist> playlists{
            {.dbId = 1, .name = "Rock", .isFolder = true},
            {.dbId = 2, .name = "Seventies", .isFolder = true, .parentDbId = 1},
            {.dbId = 3, .name = "Child", .parentDbId = 2},
            {.dbId = 4, .name = "Top"},
            {.dbId = 5, .name = "Orphan", .parentDbId = 99}, // names no folder
            {.dbId = 6, .name = "Loop", .isFolder = true, .parentDbId = 7},
            {.dbId = 7, .name = "Back", .isFolder = true, .parentDbId = 6}, // a loop of parents
        };
        QCOMPARE(folderPaths(playlists), (QList<QStringList>{{}, {"Rock"}, {"Rock", "Seventies"}, {}, {}, {"Back"}, {"Loop"}}));
        QStringList names;
        for (const Playlist &playlist : flattenedFolders(playlists))
            names.append(playlist.name);
        QCOMPARE(names, (QStringList{"Rock - Seventies - Child", "Top", "Orphan"}));
    }

    void onTheGoFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<std::optional<QList<quint32>>>("indexes");
        QTest::addRow("entries") << onTheGoFile({2, 0, 2}) << std::optional(QList<quint32>{2, 0, 2});
        QTest::addRow("count beyond the file") << onTheGoFile({4}, 1000000) << std::optional(QList<quint32>{4});
        QTest::addRow("another tag") << QByteArray("mhbd").append(16, '\0') << std::optional<QList<quint32>>();
        QByteArray longHeader = onTheGoFile({1});
        longHeader[4] = char(200); // header length past the end
        QTest::addRow("header past the end") << longHeader << std::optional<QList<quint32>>();
    }

    void onTheGoFiles()
    {
        QFETCH(QByteArray, bytes);
        QTEST(parseOnTheGoFile(bytes), "indexes");
    }

    void onTheGoPlaylistsResolveThroughFileOrder()
    {
        QTemporaryDir dir;
        // Track ids 30, 10, 20 in file order: index 0 is track 30.
        const ParseResult library = ITunesDBParser().parse(ITunesDBWriter()
                                                               .addTrack(TrackItem::song(30, "Thirty", {}, {}))
                                                               .addTrack(TrackItem::song(10, "Ten", {}, {}))
                                                               .addTrack(TrackItem::song(20, "Twenty", {}, {}))
                                                               .build());
        writeFile(dir.filePath("OTGPlaylistInfo"), onTheGoFile({}));      // empty: nothing to list
        writeFile(dir.filePath("OTGPlaylistInfo_1"), onTheGoFile({0, 2}));
        writeFile(dir.filePath("OTGPlaylistInfo_2"), onTheGoFile({1, 3})); // made for another database
        writeFile(dir.filePath("OTGPlaylistInfo_3"), onTheGoFile({1}));
        writeFile(dir.filePath("OTGPlaylistInfo_5"), onTheGoFile({1}));    // after a gap: not read
        const OnTheGoPlaylists found = readOnTheGoPlaylists(dir.path(), library);
        QCOMPARE(found.playlists.size(), 2);
        QCOMPARE(found.playlists[0].name, "On-The-Go 1");
        QCOMPARE(found.playlists[0].trackIds, (QList<quint32>{30, 20}));
        QCOMPARE(found.playlists[0].tracks.value(1).title(), "Twenty");
        QCOMPARE(found.playlists[1].name, "On-The-Go 2");
        QCOMPARE(found.playlists[1].trackIds, QList<quint32>{10});
        QCOMPARE(found.problems.size(), 1);
        QVERIFY(found.problems.first().startsWith("OTGPlaylistInfo_2: entry 3 points past the 3 tracks"));
    }

    void playCountsFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<PlayCountList>("entries");
        const PlayCountItem item{.plays = 3, .lastPlayed = 500, .rating = 80, .skips = 2};
        QTest::addRow("28-byte entries") << playCountsFile({item}) << PlayCountList({{3, 500, 80, 2}});
        QTest::addRow("16-byte entries: no skips") << playCountsFile({item}, 16) << PlayCountList({{3, 500, 80, 0}});
        QTest::addRow("12-byte entries: no rating") << playCountsFile({item}, 12) << PlayCountList({{3, 500, {}, 0}});
        QTest::addRow("count beyond the file") << playCountsFile({item, item}).chopped(1) << PlayCountList({{3, 500, 80, 2}});
        QTest::addRow("entries too short") << playCountsFile({item}, 8) << PlayCountList();
        QTest::addRow("another tag") << onTheGoFile({1}) << PlayCountList();
    }

    void playCountsFiles()
    {
        QFETCH(QByteArray, bytes);
        QTEST(parsePlayCounts(bytes), "entries");
    }

    void playCountsAddToTheDatabaseStatistics()
    {
        // Track items 7, 5, 9 in file order; 9's header is too short to hold a skip count.
        TrackItem seven = TrackItem::song(7, "Seven", {}, ":a.mp3");
        seven.rating = 60;
        seven.playCount = 10;
        seven.lastPlayed = 1000;
        seven.skipCount = 1;
        TrackItem nine{.id = 9, .playCount = 4, .skipCount = 5, .headerLength = 0x9C};
        const ParseResult library = ITunesDBParser().parse(
            ITunesDBWriter().addTrack(seven).addTrack(TrackItem::song(5, "Five", {}, ":b.mp3")).addTrack(nine).build());
        QTemporaryDir dir;
        writeFile(dir.filePath("Play Counts"),
                  playCountsFile({{.plays = 2, .lastPlayed = 900, .rating = 100, .skips = 3}, {.plays = 1, .lastPlayed = 2000}}));
        const LibraryStatistics statistics = libraryStatistics(library, dir.path());
        QCOMPARE(statistics.playsSinceSync, 3);
        const auto figures = [&statistics](int i) {
            const Track &track = statistics.tracks.at(i);
            return QList<quint32>{track.id(), track.playCount(), track.lastPlayed(), track.rating(), track.skipCount()};
        };
        QCOMPARE(figures(0), (QList<quint32>{7, 12, 1000, 100, 4}));
        QCOMPARE(figures(1), (QList<quint32>{5, 1, 2000, 0, 0}));
        QCOMPARE(figures(2), (QList<quint32>{9, 4, 0, 0, 0}));
        writeFile(dir.filePath("Play Counts"), "junk");
        QVERIFY(libraryStatistics(library, dir.path()).playCountsUnreadable);
    }
};

QTEST_APPLESS_MAIN(TestExtraPlaylists)
#include "tst_extraplaylists.moc"
