#include "AppFixture.h"
#include "core/FileSystemError.h"
#include "support/TestFiles.h"

#include <QProcess>

using namespace kestrune;
using namespace kestrune::testing;
using namespace kestrune::dbwriter;

namespace {

bool run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(10000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

// A small tmpfs standing in for an iPod's volume; unmounted when it goes out of scope.
struct TinyVolume {
    QString path;
    bool mounted = false;

    TinyVolume(const QString &at, const QString &options)
        : path(at)
    {
#ifdef Q_OS_LINUX
        QDir().mkpath(path);
        mounted = run("mount", {"-t", "tmpfs", "-o", options, "tmpfs", path});
#endif
    }
    ~TinyVolume()
    {
        if (mounted)
            run("umount", {"-l", path});
    }
    bool remount(const QString &options) { return run("mount", {"-o", "remount," + options, path}); }
};

#define REQUIRE_MOUNT(volume)                                                                                          \
    if (!(volume).mounted)                                                                                             \
    QSKIP("needs Linux and the right to mount a tmpfs (root); this machine refused")

Playlist bigPlaylist(const QString &name, int tracks)
{
    Playlist playlist{.id = name, .name = name};
    for (int i = 0; i < tracks; ++i) {
        playlist.tracks.append(Track{.id = quint32(i), .title = QStringLiteral("A rather long song title %1").arg(i),
                                     .artist = QStringLiteral("Some Artist"),
                                     .ipodPath = QStringLiteral(":iPod_Control:Music:F01:SONG%1.mp3").arg(i),
                                     .totalTimeMs = 200000});
    }
    return playlist;
}

} // namespace

// The device turns read-only or goes away under a run; and a full cycle changes only what it should. (A
// real FAT32 volume with more faults: tests/fat32.)
class TestDeviceSafety : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readOnlyDeviceChangesNothing();
    void deviceRemovedDuringRun();
    void fullCycleChangesOnlyExpectedPaths();
};

void TestDeviceSafety::readOnlyDeviceChangesNothing()
{
    QTemporaryDir dir;
    TinyVolume volume(dir.filePath("ipod"), "size=1m");
    REQUIRE_MOUNT(volume);
    const QString folder = volume.path + "/Playlists";
    writeFile(folder + "/Rock.m3u8", "old");
    writeFile(folder + "/._Rock.m3u8", "junk");
    QVERIFY(volume.remount("ro"));
    const QMap<QString, QByteArray> before = snapshotTree(volume.path);

    const RockboxGenerator generator;
    for (const QString &name : {QStringLiteral("Rock"), QStringLiteral("New")}) {
        const ExportItemResult result = generator.exportPlaylist(bigPlaylist(name, 3), QUrl::fromLocalFile(folder), {});
        QVERIFY(!result.isSuccess);
        QVERIFY2(result.errorMessage.value_or(QString()).contains("Read-only", Qt::CaseInsensitive),
                 qPrintable(result.errorMessage.value_or(QString())));
    }
    QCOMPARE(generator.cleanDotFiles(QUrl::fromLocalFile(folder)), 0);
    QVERIFY_THROWS_EXCEPTION(FileSystemError, generator.deleteItem(QUrl::fromLocalFile(folder + "/Rock.m3u8")));
    QCOMPARE(snapshotTree(volume.path), before);
}

void TestDeviceSafety::deviceRemovedDuringRun()
{
    QTemporaryDir dir;
    TinyVolume device(dir.filePath("IPOD"), "size=8m");
    REQUIRE_MOUNT(device);
    AppFixture fixture;
    ITunesDBWriter writer;
    QList<quint32> ids;
    for (quint32 id = 1; id <= 3000; ++id) {
        writer.addTrack(TrackItem::song(id, QStringLiteral("Song %1").arg(id), "Artist", QStringLiteral(":iPod_Control:Music:F00:S%1.mp3").arg(id)));
        ids.append(id);
    }
    for (int p = 0; p < 30; ++p)
        writer.addPlaylist(PlaylistItem::of(QStringLiteral("Mix %1").arg(p), ids));
    fixture.addIPod("HOST", writer.build());
    AppViewModel &model = fixture.startLoaded(30);
    ConversionOptions options = model.options();
    options.destinationFolder = QUrl::fromLocalFile(device.path + "/Playlists");
    model.setOptions(options);

    bool removed = false;
    connect(&model, &AppViewModel::conversionProgressChanged, &model, [&] {
        if (!removed && model.conversionProgress() > 0)
            removed = run("umount", {"-l", device.path});
    });
    model.convertSelectedPlaylists();
    QTRY_VERIFY_WITH_TIMEOUT(!model.isConverting(), 20000);
    device.mounted = !removed;
    QVERIFY(removed);

    // Nothing reached the device, and nothing was written on the bare mount point in its place.
    QCOMPARE(model.exportResults().size(), 30);
    for (const ExportItemResult &result : model.exportResults())
        QVERIFY2(result.errorMessage.value_or(QString()).contains("removed or unmounted"), qPrintable(result.errorMessage.value_or("success")));
    QVERIFY(QDir(device.path).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    // The model goes on: another destination works.
    QTemporaryDir elsewhere;
    options.destinationFolder = QUrl::fromLocalFile(elsewhere.path());
    model.setOptions(options);
    model.convertSelectedPlaylists();
    QTRY_VERIFY_WITH_TIMEOUT(!model.isConverting(), 20000);
    QVERIFY(std::all_of(model.exportResults().cbegin(), model.exportResults().cend(),
                        [](const ExportItemResult &result) { return result.isSuccess; }));
}

void TestDeviceSafety::fullCycleChangesOnlyExpectedPaths()
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
    for (const char *written : {"Playlists/Road Trip.m3u8", "Playlists/Chill.m3u8", "Playlists/Empty.m3u8"}) {
        QVERIFY2(after.contains(written), qPrintable(written));
        expected.insert(written, after.value(written));
    }
    QCOMPARE(after, expected);
#ifndef Q_OS_WIN
    QCOMPARE(readFile(outside.filePath("._precious")), QByteArray("not ours"));
#endif
}

QTEST_GUILESS_MAIN(TestDeviceSafety)
#include "tst_devicesafety.moc"
