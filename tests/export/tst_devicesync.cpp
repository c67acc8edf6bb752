#include "export/DeviceLock.h"
#include "export/DeviceRecord.h"
#include "export/DeviceSync.h"
#include "support/TestFiles.h"

#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;
using namespace kestrune::testing;

namespace {

Playlist playlist(const QString &name, quint64 id, bool onTheGo = false)
{
    return Playlist{.id = name, .dbId = id, .name = name, .isOnTheGo = onTheGo,
                    .tracks = {Track({.id = 1, .title = QStringLiteral("T"), .ipodPath = QStringLiteral(":a.mp3")})}};
}

QHash<quint64, int> idsOf(const QList<Playlist> &playlists)
{
    QHash<quint64, int> ids;
    for (const Playlist &each : playlists)
        ++ids[each.dbId];
    return ids;
}

struct Device {
    QTemporaryDir dir;
    Device()
    {
        QDir().mkpath(dir.filePath("iPod_Control"));
        QDir().mkpath(dir.filePath(".rockbox"));
    }
    [[nodiscard]] QString path(const QString &relative) const { return dir.filePath(relative); }

    PlaylistRunReport run(const QList<Playlist> &playlists, bool incomplete = false) const
    {
        const WriteScope scope = writeScopeFor(path("Playlists"), true);
        const std::variant<DeviceLock, QString> lock = DeviceLock::acquire(scope.root, std::chrono::milliseconds(0));
        PlaylistRunRequest request{.playlists = playlists, .options = {.cleanDotFiles = false}, .mirror = true,
                                   .libraryIncomplete = incomplete, .libraryIds = idsOf(playlists)};
        return runPlaylists(scope, request, RockboxGenerator());
    }
};

QStringList statusesOf(const PlaylistRunReport &report)
{
    QStringList statuses;
    for (const ExportItemResult &result : report.results)
        statuses.append(result.filename + ' ' + result.status() + (result.reason.isEmpty() ? "" : " (" + result.reason + ')'));
    return statuses;
}

} // namespace

// Repeated runs on one device: what is left alone, what mirror removes and what it never touches.
class TestDeviceSync : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void secondRun_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<QStringList>("statuses"); // of the second run, playlists first, then removals
        QTest::addColumn<QStringList>("files");    // in Playlists afterwards
        const QStringList all{"A.m3u8", "B.m3u8", "On-The-Go 1.m3u8"};
        QTest::addRow("nothing changed") << "" << QStringList{"A.m3u8 unchanged", "B.m3u8 unchanged", "On-The-Go 1.m3u8 unchanged"} << all;
        QTest::addRow("updated") << "B has a new track" << QStringList{"A.m3u8 unchanged", "B.m3u8 written", "On-The-Go 1.m3u8 unchanged"} << all;
        QTest::addRow("deleted in iTunes") << "B deleted" << QStringList{"A.m3u8 unchanged", "B.m3u8 removed (deleted in iTunes)"}
                                           << QStringList{"A.m3u8", "On-The-Go 1.m3u8"};
        QTest::addRow("renamed in iTunes") << "B renamed" << QStringList{"A.m3u8 unchanged", "Bee.m3u8 written", "B.m3u8 removed (renamed in iTunes)"}
                                           << QStringList{"A.m3u8", "Bee.m3u8", "On-The-Go 1.m3u8"};
        QTest::addRow("id 0 tells no rename") << "B renamed, id 0" << QStringList{"A.m3u8 unchanged", "Bee.m3u8 written", "B.m3u8 removed (deleted in iTunes)"}
                                              << QStringList{"A.m3u8", "Bee.m3u8", "On-The-Go 1.m3u8"};
        QTest::addRow("edited after writing") << "B deleted, B edited" << QStringList{"A.m3u8 unchanged", "B.m3u8 kept (edited since Kestrune wrote it)"}
                                              << QStringList{"A.m3u8", "B.m3u8", "On-The-Go 1.m3u8"};
        QTest::addRow("a file Kestrune did not write") << "B deleted, Mine added" << QStringList{"A.m3u8 unchanged", "B.m3u8 removed (deleted in iTunes)"}
                                                       << QStringList{"A.m3u8", "Mine.m3u8", "On-The-Go 1.m3u8"};
        QTest::addRow("no record") << "B deleted, no .rockbox" << QStringList{"A.m3u8 unchanged"} << all;
        QTest::addRow("damaged record") << "B deleted, record damaged" << QStringList{"A.m3u8 unchanged"} << all;
        QTest::addRow("truncated database") << "B deleted, truncated" << QStringList{"A.m3u8 unchanged"} << all;
    }

    void secondRun()
    {
        QFETCH(QString, change);
        QFETCH(QStringList, statuses);
        QFETCH(QStringList, files);
        Device device;
        const quint64 idOfB = change.contains("id 0") ? 0 : 2;
        QList<Playlist> playlists{playlist("A", 1), playlist("B", idOfB), playlist("On-The-Go 1", 0, true)};
        QCOMPARE(device.run(playlists).failures(), 0);

        playlists.removeLast(); // On-The-Go playlists are gone from the iPod after a sync
        if (change.isEmpty() || change.contains("new track"))
            playlists.append(playlist("On-The-Go 1", 0, true));
        if (change.contains("new track"))
            playlists[1].tracks.append(playlists[1].tracks.first());
        if (change.contains("deleted"))
            playlists.removeAt(1);
        if (change.contains("renamed"))
            playlists[1].name = "Bee";
        if (change.contains("edited"))
            writeFile(device.path("Playlists/B.m3u8"), "#EXTM3U\n/my/own/line.mp3\n");
        if (change.contains("Mine"))
            writeFile(device.path("Playlists/Mine.m3u8"), "#EXTM3U\n");
        if (change.contains("no .rockbox"))
            QVERIFY(QDir(device.path(".rockbox")).removeRecursively());
        if (change.contains("damaged"))
            writeFile(device.path(".rockbox/kestrune-record.json"), "{\"format\": \"kestrune-record\", \"version\": 1, \"files\": [");
        const QDateTime recorded = QFileInfo(device.path(".rockbox/kestrune-record.json")).lastModified();

        const PlaylistRunReport report = device.run(playlists, change.contains("truncated"));
        QCOMPARE(statusesOf(report), statuses);
        QCOMPARE(QDir(device.path("Playlists")).entryList(QDir::Files), files);
        QCOMPARE(report.mirrorRefusal.has_value(), change.contains(".rockbox") || change.contains("truncated"));
        if (change.isEmpty()) // nothing written: not even the record
            QCOMPARE(QFileInfo(device.path(".rockbox/kestrune-record.json")).lastModified(), recorded);
        if (change.contains("deleted") && !change.contains(".rockbox")) { // what the record says now
            const DeviceRecord record = DeviceRecord::parsed(readFile(device.path(".rockbox/kestrune-record.json")));
            QCOMPARE(record.entryAt("Playlists/B.m3u8") != nullptr, change.contains("truncated"));
        }
    }

    // A suffix given for a clash of case stays with its playlist when the clash is gone.
    void clashSuffixesStayWithTheirPlaylist()
    {
        Device device;
        device.run({playlist("Rock", 1), playlist("ROCK", 2)});
        const PlaylistRunReport report = device.run({playlist("ROCK", 2)});
        QCOMPARE(statusesOf(report), (QStringList{"ROCK (2).m3u8 unchanged", "Rock.m3u8 removed (deleted in iTunes)"}));
    }

    void statisticsStep_data()
    {
        QTest::addColumn<QString>("before"); // what is on the device
        QTest::addColumn<int>("plays");
        QTest::addColumn<int>("outcome");
        using Outcome = StatisticsStepReport::Outcome;
        QTest::addRow("written") << "" << 3 << int(Outcome::written);
        QTest::addRow("nothing to bring") << "" << 0 << int(Outcome::nothingToBring);
        QTest::addRow("no Rockbox") << "no .rockbox" << 3 << int(Outcome::notApplicable);
        QTest::addRow("the player's own changelog is left") << "player's changelog" << 3 << int(Outcome::playersOwnLeft);
        QTest::addRow("Kestrune's own is replaced") << "written before" << 5 << int(Outcome::written);
        QTest::addRow("unchanged") << "written before" << 3 << int(Outcome::unchanged);
    }

    void statisticsStep()
    {
        QFETCH(QString, before);
        QFETCH(int, plays);
        Device device;
        writeFile(device.path("iPod_Control/Music/F00/a.mp3"), "music");
        const auto statistics = [](int count) {
            Track track({.id = 1, .title = QStringLiteral("T"), .ipodPath = QStringLiteral(":iPod_Control:Music:F00:a.mp3")});
            track.editFields().playCount = quint32(count);
            return LibraryStatistics{.tracks = {track}};
        };
        if (before == "no .rockbox")
            QVERIFY(QDir(device.path(".rockbox")).removeRecursively());
        if (before == "player's changelog")
            writeFile(device.path(".rockbox/database_changelog.txt"), "## Changelog version 1\n");
        const DeviceFolder root = DeviceFolder::open(device.dir.path());
        if (before == "written before")
            QCOMPARE(int(runStatisticsStep(root, statistics(3), false).outcome), int(StatisticsStepReport::Outcome::written));
        const StatisticsStepReport report = runStatisticsStep(root, statistics(plays), false);
        QTEST(int(report.outcome), "outcome");
        if (before == "player's changelog")
            QCOMPARE(readFile(device.path(".rockbox/database_changelog.txt")), QByteArray("## Changelog version 1\n"));
        if (report.outcome == StatisticsStepReport::Outcome::written)
            QVERIFY(readFile(device.path(".rockbox/database_changelog.txt")).contains(QByteArray("playcount=\"%1\"").replace("%1", QByteArray::number(plays))));
    }
};

QTEST_GUILESS_MAIN(TestDeviceSync)
#include "tst_devicesync.moc"
