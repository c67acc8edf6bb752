#include "core/FileSystemError.h"
#include "export/RockboxGenerator.h"
#include "export/StatisticsChangelog.h"
#include "export/WriteScope.h"
#include "support/TestFiles.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;
using namespace kestrune::testing;

namespace {

Playlist playlistNamed(const QString &name)
{
    return Playlist{.id = QStringLiteral("p"), .name = name,
                    .tracks = {Track({.id = 1, .title = QStringLiteral("T"), .ipodPath = QStringLiteral(":a.mp3")})}};
}

} // namespace

// Whatever the names and options, writing stays inside the destination folder.
class TestContainment : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void linksAreNotWrittenThrough()
    {
    #ifdef Q_OS_WIN
        QSKIP("symbolic links need extra rights on Windows");
    #endif
        QTemporaryDir outside;
        const QString victim = outside.filePath("victim.txt");
        writeFile(victim, "not ours");
        QTemporaryDir device;
        const QString folder = device.filePath("Playlists");
        QDir().mkpath(folder);
        QVERIFY(QFile::link(victim, folder + "/Rock.m3u8"));
        QVERIFY(QFile::link(outside.path(), folder + "/elsewhere"));
        // A linked playlist file is replaced, not written through.
        QVERIFY(RockboxGenerator().exportPlaylist(playlistNamed("Rock"), QUrl::fromLocalFile(folder), {}).isSuccess);
        QVERIFY(!QFileInfo(folder + "/Rock.m3u8").isSymLink());
        QVERIFY(readFile(folder + "/Rock.m3u8").startsWith("#EXTM3U\n"));
        // A name as it is (sanitising off) may not lead through a linked sub-folder.
        QVERIFY(!RockboxGenerator().exportPlaylist(playlistNamed("elsewhere/escape"), QUrl::fromLocalFile(folder),
                                                   ConversionOptions{.sanitizeFilenames = false}).isSuccess);
        QCOMPARE(QDir(outside.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList{"victim.txt"});
        QCOMPARE(readFile(victim), QByteArray("not ours"));
    }

    // A link on the device, wherever it stands on the way to what Kestrune writes or removes, is refused
    // with a message naming it, and nothing happens where it points.
    void linksOnTheWayAreRefused_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<QString>("operation");
        QTest::addRow("Playlists, written to") << "Playlists" << "export";
        QTest::addRow("Playlists, removed from") << "Playlists" << "delete";
        QTest::addRow("Playlists, cleaned") << "Playlists" << "clean";
        QTest::addRow(".rockbox, the changelog written to") << ".rockbox" << "changelog";
        QTest::addRow("iPod_Control, lending a folder an iPod") << "iPod_Control" << "scope";
    }

    void linksOnTheWayAreRefused()
    {
        QFETCH(QString, link);
        QFETCH(QString, operation);
        QTemporaryDir outside, device;
        writeFile(outside.filePath("Mix.m3u8"), "not ours");
        writeFile(outside.filePath(".bashrc"), "not ours");
        writeFile(outside.filePath("database_changelog.txt"), "not ours");
        const QMap<QString, QByteArray> untouched = snapshotTree(outside.path());
        if (link != "iPod_Control")
            QDir().mkpath(device.filePath("iPod_Control"));
        QVERIFY(QFile::link(outside.path(), device.filePath(link)));
        const QString linkPath = QFileInfo(device.filePath(link)).absoluteFilePath();

        QString refusal;
        const RockboxGenerator generator{DotFileCleaner(QString())};
        if (operation == "export") {
            refusal = generator.exportPlaylist(playlistNamed("Mix"), QUrl::fromLocalFile(linkPath), {}).errorMessage.value_or("");
        } else if (operation == "delete") {
            try {
                generator.deleteItem(QUrl::fromLocalFile(linkPath + "/Mix.m3u8"));
            } catch (const FileSystemError &error) {
                refusal = error.errorDescription;
            }
        } else if (operation == "clean") {
            refusal = generator.cleanDotFileTree(QUrl::fromLocalFile(linkPath)).refused.value_or("");
        } else if (operation == "changelog") {
            refusal = writeStatisticsChangelog(device.path(), "changelog", true).value_or("");
        } else {
            refusal = writeScopeFor(device.path() + "/Playlists", true).root.error().value_or("");
            QVERIFY(generator.cleanDotFileTree(QUrl::fromLocalFile(device.path())).skippedOutsideIPod);
        }
        QVERIFY2(refusal.contains(linkPath + "” is a symbolic link") || refusal.contains(linkPath + "' is a symbolic link"),
                 qPrintable(refusal));
        QCOMPARE(snapshotTree(outside.path()), untouched);
    }

    void randomNamesStayInside_data()
    {
        QTest::addColumn<bool>("sanitize");
        QTest::addRow("sanitising") << true;
        QTest::addRow("names as they are") << false;
    }

    void randomNamesStayInside()
    {
        QFETCH(bool, sanitize);
        QTemporaryDir root;
        const QString folder = root.filePath("device/Playlists");
        writeFile(root.filePath("device/iPod_Control/Music/F00/A.mp3"), "music");
        writeFile(root.filePath("beside.txt"), "neighbour");
        QDir().mkpath(folder + "/sub");
        const QMap<QString, QByteArray> before = snapshotTree(root.path());

        const QStringList pieces{"..", ".", "/", "\\", "sub", ":", "*", "?", " ", "Rock", "é", "C:", "~", "\n", ""};
        QRandomGenerator random(42);
        const RockboxGenerator generator{DotFileCleaner(QString())};
        for (int i = 0; i < 400; ++i) {
            QString name;
            for (int p = random.bounded(1, 6); p > 0; --p)
                name += pieces.at(random.bounded(int(pieces.size())));
            const ConversionOptions options{.useM3U8Extension = random.bounded(2) == 0, .sanitizeFilenames = sanitize};
            const ExportItemResult result = generator.exportPlaylist(playlistNamed(name), QUrl::fromLocalFile(folder), options);
            if (result.isSuccess) {
                const QString written = QFileInfo(result.fileURL.toLocalFile()).canonicalFilePath();
                QVERIFY2(written.startsWith(QFileInfo(folder).canonicalFilePath() + '/'), qPrintable(name));
            }
        }
        // Outside the playlists folder nothing changed.
        QMap<QString, QByteArray> after = snapshotTree(root.path());
        for (auto it = after.begin(); it != after.end();)
            it = it.key().startsWith("device/Playlists/") ? after.erase(it) : std::next(it);
        QMap<QString, QByteArray> expected = before;
        expected.remove("device/Playlists/sub");
        QCOMPARE(after, expected);
    }
};

QTEST_GUILESS_MAIN(TestContainment)
#include "tst_containment.moc"
