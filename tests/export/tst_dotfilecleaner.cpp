#include "export/RockboxGenerator.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QProcess>
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

const QStringList keptFiles{"Playlists/Rock.m3u8", "Playlists/Rock80s/HardRock.m3u", "iPod_Control/Music/F00/ABCD.mp3",
                            ".rockbox/config.cfg", ".rockbox/themes/cabbie.cfg", "Playlists/deep/.Rockbox/._x",
                            "Other/.rockbox"};

// The device tree macOS leaves behind: playlists, music, Rockbox's folder (in any case: FAT is case-blind),
// and junk of every kind.
void makeDeviceTree(const QString &root)
{
    for (const QString &kept : keptFiles)
        writeFile(root + u'/' + kept, "kept");
    for (const char *junk : {"Playlists/._Rock.m3u8", "Playlists/.DS_Store", "Playlists/Rock80s/._HardRock.m3u",
                             "Playlists/Rock80s/.DS_Store", "iPod_Control/Music/F00/._ABCD.mp3", ".DS_Store",
                             ".Trashes/trash.txt", ".Spotlight-V100/store.db"})
        writeFile(root + u'/' + QLatin1StringView(junk), "junk");
}

const DotFileCleaner cleaner{QString()}; // without the system cleaner

} // namespace

class TestDotFileCleaner : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleansDeviceTree()
    {
        QTemporaryDir tmp;
        makeDeviceTree(tmp.path());
        const QMap<QString, QByteArray> before = snapshotTree(tmp.path());
        QCOMPARE(DotFileCleaner::find(tmp.path()).size(), 8); // six files and two folders, each folder once
        QCOMPARE(snapshotTree(tmp.path()), before);

        QCOMPARE(cleaner.clean(tmp.path()), (DotFileCleaner::Report{.removed = 8}));
        QMap<QString, QByteArray> expected;
        for (auto it = before.cbegin(); it != before.cend(); ++it) {
            const QString name = it.key().section(u'/', -1);
            const bool junk = it.key().contains("Trashes") || it.key().contains("Spotlight") ||
                              ((name.startsWith("._") || name == ".DS_Store") && !it.key().contains("Rockbox"));
            if (!junk)
                expected.insert(it.key(), it.value());
        }
        QCOMPARE(snapshotTree(tmp.path()), expected);
        QCOMPARE(cleaner.clean(tmp.path()), DotFileCleaner::Report{}); // nothing new: nothing removed
    }

    void rootsThatAreLeftAlone_data()
    {
        QTest::addColumn<QString>("root");
        QTest::addColumn<bool>("outsideIPod");
        QTest::addRow("root named .rockbox") << "ipod/.rockbox" << false;
        QTest::addRow("root named .ROCKBOX") << "ipod/Other/.ROCKBOX" << false;
        QTest::addRow("a home folder") << "home" << true;
    }

    void rootsThatAreLeftAlone()
    {
        QFETCH(QString, root);
        QFETCH(bool, outsideIPod);
        QTemporaryDir tmp;
        QDir().mkpath(tmp.filePath("ipod/iPod_Control"));
        for (const char *path : {"ipod/.rockbox/._junk", "ipod/Other/.ROCKBOX/._junk", "home/.ssh/id", "home/.config/x",
                                 "home/src/.git/HEAD"})
            writeFile(tmp.filePath(QLatin1StringView(path)), "kept");
        const QMap<QString, QByteArray> before = snapshotTree(tmp.path());
        QCOMPARE(cleaner.clean(tmp.filePath(root)), (DotFileCleaner::Report{.skippedOutsideIPod = outsideIPod}));
        QVERIFY(DotFileCleaner::find(tmp.filePath(root)).isEmpty());
        QCOMPARE(snapshotTree(tmp.path()), before);
    }

    void linksAreNeverFollowed()
    {
        QTemporaryDir outside;
        writeFile(outside.filePath("._precious"), "not ours");
        writeFile(outside.filePath(".rockbox/config.cfg"), "not ours either");
        const QMap<QString, QByteArray> untouched = snapshotTree(outside.path());
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        QVERIFY(root.mkpath("iPod_Control") && root.mkpath("Playlists"));
        QVERIFY(QFile::link(outside.path(), root.filePath("Playlists/linked-folder")));
        QVERIFY(QFile::link(outside.path(), root.filePath("Playlists/.dot-link")));
        QVERIFY(QFile::link(outside.filePath(".rockbox"), root.filePath(".rockbox")));
        QVERIFY(QFile::link("/nonexistent", root.filePath("._dangling")));

        QCOMPARE(cleaner.clean(tmp.path()).removed, 2); // the two dot-named links, as links
        QVERIFY(!QFileInfo(root.filePath("Playlists/.dot-link")).isSymLink());
        QVERIFY(!QFileInfo(root.filePath("._dangling")).isSymLink());
        QVERIFY(QFileInfo(root.filePath("Playlists/linked-folder")).isSymLink());
        QCOMPARE(snapshotTree(outside.path()), untouched);
    }

    // A mount inside the tree is neither entered, emptied nor removed, whatever its name; a bind mount of a
    // folder of the same disk keeps the disk's device number, so only the mount table tells it.
    void otherMountsAreLeftAlone_data()
    {
        QTest::addColumn<QString>("mountPoint");
        QTest::addColumn<QStringList>("how");
        QTest::addRow("tmpfs under a dot folder") << ".mounted" << QStringList{"-t", "tmpfs", "tmpfs"};
        QTest::addRow("tmpfs in a playlists sub-folder") << "Playlists/mounted" << QStringList{"-t", "tmpfs", "tmpfs"};
        QTest::addRow("bind mount of the same disk") << "Playlists/bound" << QStringList{"--bind", "@secrets"};
        QTest::addRow("bind mount on a dot folder") << ".bound" << QStringList{"--bind", "@secrets"};
    }

    void otherMountsAreLeftAlone()
    {
        QFETCH(QString, mountPoint);
        QFETCH(QStringList, how);
        QTemporaryDir tmp, home;
        QDir().mkpath(tmp.filePath("iPod_Control"));
        QDir().mkpath(tmp.filePath(mountPoint));
        writeFile(home.filePath(".env"), "theirs");
        if (!run("mount", how.replaceInStrings("@secrets", home.path()) << tmp.filePath(mountPoint)))
            QSKIP("needs the right to mount (root on Linux); this machine refused");
        const auto unmount = qScopeGuard([&] { run("umount", {tmp.filePath(mountPoint)}); });
        writeFile(tmp.filePath(mountPoint + "/.git-credentials"), "theirs");
        writeFile(tmp.filePath("Playlists/._ours"), "junk");
        const QMap<QString, QByteArray> theirs = snapshotTree(tmp.filePath(mountPoint));

        const DotFileCleaner::Report report = cleaner.clean(tmp.path());
        QCOMPARE(report.removed, 1);
        QCOMPARE(report.skippedMounts, QStringList{QFileInfo(tmp.filePath(mountPoint)).canonicalFilePath()});
        QCOMPARE(snapshotTree(tmp.filePath(mountPoint)), theirs);
        QVERIFY(QFileInfo::exists(home.filePath(".env")));
    }

    void failuresAreNamedWithTheirReason()
    {
        QTemporaryDir tmp;
        QDir().mkpath(tmp.filePath("ipod"));
        if (!run("mount", {"-t", "tmpfs", "tmpfs", tmp.filePath("ipod")}))
            QSKIP("needs the right to mount a tmpfs (root on Linux); this machine refused");
        const auto unmount = qScopeGuard([&] { run("umount", {tmp.filePath("ipod")}); });
        writeFile(tmp.filePath("ipod/iPod_Control/iTunes/iTunesDB"), "db");
        writeFile(tmp.filePath("ipod/Playlists/._a"), "junk");
        writeFile(tmp.filePath("ipod/.Trashes/x"), "junk");
        QVERIFY(run("mount", {"-o", "remount,ro", tmp.filePath("ipod")})); // a volume that refuses removals
        const QString root = QFileInfo(tmp.filePath("ipod")).canonicalFilePath();
        const QString readOnly = QStringLiteral("The device is read-only (read-only file system).");
        QCOMPARE(cleaner.clean(tmp.filePath("ipod")).failures,
                 (QList<DotFileCleaner::Failure>{{root + "/.Trashes/x", readOnly}, {root + "/Playlists/._a", readOnly}}));
    }
};

QTEST_GUILESS_MAIN(TestDotFileCleaner)
#include "tst_dotfilecleaner.moc"
