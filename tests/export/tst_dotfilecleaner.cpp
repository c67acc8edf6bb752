#include "export/RockboxGenerator.h"

#include <QDir>
#include <QDirIterator>
#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;

namespace {

void write(const QDir &root, const QString &relative, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(root.filePath(relative)).absolutePath());
    QFile file(root.filePath(relative));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot create %s", qPrintable(file.fileName()));
    file.write(bytes);
}

// Every path below the root, links not followed, relative and sorted.
QStringList treeOf(const QString &root)
{
    QStringList paths;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        paths.append(QDir(root).relativeFilePath(it.next()));
    paths.sort();
    return paths;
}

const QStringList keptFiles{QStringLiteral("Playlists/Rock.m3u8"), QStringLiteral("Playlists/Rock80s/HardRock.m3u"),
                            QStringLiteral("iPod_Control/Music/F00/ABCD.mp3"), QStringLiteral(".rockbox/config.cfg"),
                            QStringLiteral(".rockbox/themes/cabbie.cfg")};

// The device tree macOS leaves behind: playlists, music, Rockbox's folder, and junk of every kind.
void makeDeviceTree(const QDir &root)
{
    write(root, keptFiles[0], "playlist content");
    write(root, keptFiles[1], "sub playlist content");
    write(root, keptFiles[2], "mp3");
    write(root, keptFiles[3], "volume: 10");
    write(root, keptFiles[4], "theme: cabbie");
    for (const char *junk : {"Playlists/._Rock.m3u8", "Playlists/.DS_Store", "Playlists/Rock80s/._HardRock.m3u",
                             "Playlists/Rock80s/.DS_Store", "iPod_Control/Music/F00/._ABCD.mp3", ".DS_Store",
                             ".Trashes/trash.txt", ".Spotlight-V100/store.db"})
        write(root, QString::fromLatin1(junk), "junk");
}

RockboxGenerator withoutSystemCleaner()
{
    return RockboxGenerator(DotFileCleaner(QString()));
}

} // namespace

class TestDotFileCleaner : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleansDeviceTree();
    void secondCallFindsNothing();
    void rootsThatAreLeftAlone_data();
    void rootsThatAreLeftAlone();
    void rockboxSparedAtAnyDepth();
    void linksAreNeverFollowed();
    void systemCleanerRunsFirstAndIsNotCounted();
};

void TestDotFileCleaner::cleansDeviceTree()
{
    QTemporaryDir tmp;
    const QDir root(tmp.path());
    makeDeviceTree(root);
    QCOMPARE(withoutSystemCleaner().cleanDotFiles(QUrl::fromLocalFile(tmp.path())), 8);

    const QStringList expected{QStringLiteral(".rockbox"), keptFiles[3], QStringLiteral(".rockbox/themes"), keptFiles[4],
                               QStringLiteral("Playlists"), keptFiles[0], QStringLiteral("Playlists/Rock80s"), keptFiles[1],
                               QStringLiteral("iPod_Control"), QStringLiteral("iPod_Control/Music"),
                               QStringLiteral("iPod_Control/Music/F00"), keptFiles[2]};
    QStringList sortedExpected = expected;
    sortedExpected.sort();
    QCOMPARE(treeOf(tmp.path()), sortedExpected);
    QFile theme(root.filePath(keptFiles[4]));
    QVERIFY(theme.open(QIODevice::ReadOnly));
    QCOMPARE(theme.readAll(), QByteArray("theme: cabbie"));
}

void TestDotFileCleaner::secondCallFindsNothing()
{
    QTemporaryDir tmp;
    makeDeviceTree(QDir(tmp.path()));
    const RockboxGenerator generator = withoutSystemCleaner();
    QCOMPARE(generator.cleanDotFiles(QUrl::fromLocalFile(tmp.path())), 8);
    QCOMPARE(generator.cleanDotFiles(QUrl::fromLocalFile(tmp.path())), 0);
}

void TestDotFileCleaner::rootsThatAreLeftAlone_data()
{
    QTest::addColumn<QString>("root");
    QTest::addRow("missing root") << "missing";
    QTest::addRow("root named .rockbox") << ".rockbox";
}

void TestDotFileCleaner::rootsThatAreLeftAlone()
{
    QFETCH(QString, root);
    QTemporaryDir tmp;
    write(QDir(tmp.path()), QStringLiteral(".rockbox/._junk"), "junk");
    const QStringList before = treeOf(tmp.path());
    QCOMPARE(withoutSystemCleaner().cleanDotFiles(QUrl::fromLocalFile(tmp.filePath(root))), 0);
    QCOMPARE(treeOf(tmp.path()), before);
}

void TestDotFileCleaner::rockboxSparedAtAnyDepth()
{
    QTemporaryDir tmp;
    const QDir root(tmp.path());
    write(root, QStringLiteral("Playlists/deep/.rockbox/._x"), "junk");
    write(root, QStringLiteral("Playlists/deep/.rockbox/.DS_Store"), "junk");
    write(root, QStringLiteral("Other/.rockbox"), "a file named like the folder");
    write(root, QStringLiteral("Other/._y"), "junk");
    QCOMPARE(withoutSystemCleaner().cleanDotFiles(QUrl::fromLocalFile(tmp.path())), 1);
    QVERIFY(QFileInfo::exists(root.filePath(QStringLiteral("Playlists/deep/.rockbox/._x"))));
    QVERIFY(QFileInfo::exists(root.filePath(QStringLiteral("Playlists/deep/.rockbox/.DS_Store"))));
    QVERIFY(QFileInfo::exists(root.filePath(QStringLiteral("Other/.rockbox"))));
    QVERIFY(!QFileInfo::exists(root.filePath(QStringLiteral("Other/._y"))));
}

void TestDotFileCleaner::linksAreNeverFollowed()
{
#ifdef Q_OS_WIN
    QSKIP("symbolic links need extra rights on Windows");
#endif
    QTemporaryDir outside;
    write(QDir(outside.path()), QStringLiteral("._precious"), "not ours");
    write(QDir(outside.path()), QStringLiteral(".rockbox/config.cfg"), "not ours either");
    QTemporaryDir tmp;
    const QDir root(tmp.path());
    QVERIFY(root.mkpath(QStringLiteral("Playlists")));
    QVERIFY(QFile::link(outside.path(), root.filePath(QStringLiteral("Playlists/linked-folder"))));
    QVERIFY(QFile::link(outside.path(), root.filePath(QStringLiteral("Playlists/.dot-link"))));
    QVERIFY(QFile::link(outside.filePath(QStringLiteral(".rockbox")), root.filePath(QStringLiteral(".rockbox"))));
    QVERIFY(QFile::link(QStringLiteral("/nonexistent"), root.filePath(QStringLiteral("._dangling"))));

    QCOMPARE(withoutSystemCleaner().cleanDotFiles(QUrl::fromLocalFile(tmp.path())), 2);
    QVERIFY(!QFileInfo(root.filePath(QStringLiteral("Playlists/.dot-link"))).isSymLink());
    QVERIFY(!QFileInfo(root.filePath(QStringLiteral("._dangling"))).isSymLink());
    QVERIFY(QFileInfo(root.filePath(QStringLiteral("Playlists/linked-folder"))).isSymLink());
    QVERIFY(QFileInfo(root.filePath(QStringLiteral(".rockbox"))).isSymLink());
    QCOMPARE(treeOf(outside.path()),
             (QStringList{QStringLiteral("._precious"), QStringLiteral(".rockbox"), QStringLiteral(".rockbox/config.cfg")}));
}

void TestDotFileCleaner::systemCleanerRunsFirstAndIsNotCounted()
{
#ifdef Q_OS_WIN
    QSKIP("the stand-in cleaner is a shell script");
#endif
    QTemporaryDir tools;
    const QString log = tools.filePath(QStringLiteral("arguments"));
    const QString script = tools.filePath(QStringLiteral("dot_clean"));
    // A stand-in for the system cleaner: records its arguments and removes the "._" files itself.
    write(QDir(tools.path()), QStringLiteral("dot_clean"),
          QStringLiteral("#!/bin/sh\nprintf '%s\\n' \"$@\" > '%1'\nfind \"$2\" -name '._*' -delete\n").arg(log).toUtf8());
    QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    QTemporaryDir tmp;
    makeDeviceTree(QDir(tmp.path()));
    const int removed = RockboxGenerator(DotFileCleaner(script)).cleanDotFiles(QUrl::fromLocalFile(tmp.path()));
    QCOMPARE(removed, 5); // the three "._" files went with the system cleaner
    QFile arguments(log);
    QVERIFY(arguments.open(QIODevice::ReadOnly));
    QCOMPARE(arguments.readAll(), (QStringLiteral("-m\n") + tmp.path() + u'\n').toUtf8());
}

QTEST_GUILESS_MAIN(TestDotFileCleaner)
#include "tst_dotfilecleaner.moc"
