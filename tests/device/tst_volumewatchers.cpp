#include "device/IPodDetector.h"
#include "device/MountTableWatcher.h"
#include "device/PollingVolumeWatcher.h"

#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;

namespace {

bool run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(10000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

} // namespace

class TestVolumeWatchers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void pollingReportsChangedListings();
    void realMountTriggersRescan();
};

void TestVolumeWatchers::pollingReportsChangedListings()
{
    QStringList listing{"/"};
    PollingVolumeWatcher watcher([&listing] { return listing; }, 10);
    QSignalSpy changed(&watcher, &VolumeWatcher::volumesChanged);
    QTest::qWait(50);
    QCOMPARE(changed.count(), 0);
    listing.append("/media/IPOD");
    QTRY_COMPARE(changed.count(), 1);
}

void TestVolumeWatchers::realMountTriggersRescan()
{
#ifndef Q_OS_LINUX
    QSKIP("the mount table watcher is Linux's");
#else
    QTemporaryDir tmp;
    const QString device = tmp.filePath("device");
    const QString volumes = tmp.filePath("volumes");
    const QString mountPoint = volumes + "/IPOD";
    QDir().mkpath(device + "/iPod_Control/iTunes");
    QFile(device + "/iPod_Control/iTunes/iTunesDB").open(QIODevice::WriteOnly);
    QDir().mkpath(mountPoint);

    auto watcher = std::make_unique<MountTableWatcher>();
    QVERIFY(watcher->isWatching());
    IPodDetector detector(IPodDetector::Services{entriesOfFolder(volumes), [](const QString &) { return VolumeInfo{}; },
                                                 std::move(watcher)});
    QVERIFY(detector.detectedDevices().isEmpty());

    if (!run("mount", {"--bind", device, mountPoint}))
        QSKIP("mounting needs root and a system that allows it; this one refused");
    const auto unmount = qScopeGuard([&] { run("umount", {mountPoint}); });
    QTRY_COMPARE_WITH_TIMEOUT(detector.detectedDevices().size(), 1, 3000);
    QCOMPARE(detector.selectedDevice()->mountURL, QUrl::fromLocalFile(mountPoint));

    QVERIFY(run("umount", {mountPoint}));
    QTRY_COMPARE_WITH_TIMEOUT(detector.detectedDevices().size(), 0, 3000);
    QCOMPARE(detector.selectedDevice(), std::nullopt);
#endif
}

QTEST_GUILESS_MAIN(TestVolumeWatchers)
#include "tst_volumewatchers.moc"
