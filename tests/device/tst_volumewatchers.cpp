#include "device/IPodDetector.h"
#include "device/MountTable.h"
#include "device/MountTableWatcher.h"
#include "support/TestFiles.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;
using namespace kestrune::testing;

namespace {

bool run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(10000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

} // namespace

// Which mounts are volumes a person sees, and that only their coming and going makes a rescan.
class TestVolumeWatchers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void mountTableLines_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("mountPoint");
        QTest::addColumn<bool>("visible");
        QTest::addColumn<bool>("withoutUtf8");
        const auto row = [](const char *name, const char *line, const char *mountPoint, bool visible, bool withoutUtf8) {
            QTest::newRow(name) << QByteArray(line) << QString::fromUtf8(mountPoint) << visible << withoutUtf8;
        };
        row("iPod under /media, utf8", "36 25 8:17 / /media/ann/IPOD rw,nosuid - vfat /dev/sdb1 rw,codepage=437,utf8",
            "/media/ann/IPOD", true, false);
        row("without utf8", "36 25 8:17 / /run/media/ann/IPOD rw - vfat /dev/sdb1 rw,codepage=437,iocharset=iso8859-1",
            "/run/media/ann/IPOD", true, true);
        row("escaped space", "36 25 8:17 / /media/ann/My\\040iPod rw - vfat /dev/sdc1 rw,utf8", "/media/ann/My iPod", true, false);
        row("optional fields", "36 25 8:17 / /media/x rw shared:5 master:1 - exfat /dev/sdd1 rw", "/media/x", true, false);
        row("the system's disk", "27 1 254:0 / / rw - ext4 /dev/vda rw", "/", false, false);
        row("a removable drive anywhere", "46 25 8:33 / /home/ann/stick rw - vfat /dev/removable1 rw", "/home/ann/stick",
            true, true);
    }

    void mountTableLines()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, mountPoint);
        const QList<MountEntry> table = parseMountInfo("garbage\n" + line + "\n");
        QCOMPARE(table.size(), 1);
        QCOMPARE(table.first().mountPoint, mountPoint);
        const auto removable = [](const QString &device) { return device.startsWith("/dev/removable"); };
        QTEST(isUserVisibleVolume(table.first(), removable), "visible");
        QTEST(storesNamesWithoutUtf8(table.first()), "withoutUtf8");
    }

    void mountHoldingAPath()
    {
        QTemporaryDir dir;
        QDir().mkpath(dir.filePath("ipod/Playlists"));
        const QString ipod = QFileInfo(dir.filePath("ipod")).canonicalFilePath();
        const QList<MountEntry> table = parseMountInfo("1 0 8:1 / / rw - ext4 /dev/sda1 rw\n"
                                                       "2 1 8:17 / " + ipod.toUtf8() + " rw - vfat /dev/sdb1 rw\n"
                                                       "3 1 8:18 / " + ipod.toUtf8() + "x rw - vfat /dev/sdb2 rw\n");
        QCOMPARE(mountHolding(dir.filePath("ipod/Playlists/not yet made"), table)->source, "/dev/sdb1");
        QCOMPARE(mountHolding(dir.path(), table)->source, "/dev/sda1");
    }

    void onlyVisibleVolumesTriggerRescans()
    {
    #ifndef Q_OS_LINUX
        QSKIP("the mount table watcher is Linux's");
    #else
        QTemporaryDir tmp;
        const QString volumes = tmp.filePath("volumes");
        const QString ipod = volumes + "/IPOD";
        const QString unrelated = tmp.filePath("unrelated");
        QDir().mkpath(ipod);
        QDir().mkpath(unrelated);
        // The volumes a person sees are, here, whatever is mounted below `volumes`.
        auto watcher = std::make_unique<MountTableWatcher>(
            [&volumes](const MountEntry &mount) { return mount.mountPoint.startsWith(volumes); });
        QVERIFY(watcher->isWatching());
        QSignalSpy changed(watcher.get(), &VolumeWatcher::volumesChanged);
        IPodDetector detector(IPodDetector::Services{entriesOfFolder(volumes), [](const QString &) { return VolumeInfo{}; },
                                                     std::move(watcher)});

        if (!run("mount", {"-t", "tmpfs", "tmpfs", unrelated}))
            QSKIP("mounting needs root and a system that allows it; this one refused");
        const auto unmount = qScopeGuard([&] { run("umount", {ipod}); run("umount", {unrelated}); });
        QTest::qWait(600);
        QCOMPARE(changed.count(), 0); // the window stays as it was

        QVERIFY(run("mount", {"-t", "tmpfs", "tmpfs", ipod}));
        writeFile(ipod + "/iPod_Control/iTunes/iTunesDB", "db");
        QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, 3000);
        QTRY_COMPARE(detector.detectedDevices().size(), 1);
        QVERIFY(run("umount", {ipod}));
        QTRY_COMPARE_WITH_TIMEOUT(detector.detectedDevices().size(), 0, 3000);
    #endif
    }
};

QTEST_GUILESS_MAIN(TestVolumeWatchers)
#include "tst_volumewatchers.moc"
