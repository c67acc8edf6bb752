#include "export/DeviceFileIndex.h"
#include "export/PlaylistFileCheck.h"
#include "export/PlaylistWarnings.h"
#include "support/TestFiles.h"

#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;
using namespace kestrune::testing;

Q_DECLARE_METATYPE(kestrune::PlaylistWarning)

namespace {

Playlist playlistOf(const QString &name, const QStringList &paths)
{
    Playlist playlist{.name = name};
    for (const QString &path : paths)
        playlist.tracks.append(Track({.id = quint32(playlist.tracks.size() + 1), .ipodPath = path}));
    return playlist;
}

const QString longName = QString(229, u'L') + ".mp3"; // "/iPod_Control/Music/F00/" + this: 257 bytes

} // namespace

// What the player will not play: entries past its limit, paths too long to open, files that are missing.
class TestPlayerChecks : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void deviceFilesAreFoundAsThePlayerFindsThem()
    {
        QTemporaryDir dir;
        for (int folder = 0; folder < 20; ++folder) {
            for (int file = 0; file < 5; ++file)
                writeFile(dir.filePath(QString("iPod_Control/Music/F%1/S%2.MP3").arg(folder, 2, 10, QChar(u'0')).arg(file)), "x");
        }
        DeviceFileIndex files(dir.path());
        QVERIFY(files.contains("/iPod_Control/Music/F07/S3.MP3"));
        QVERIFY(files.contains("/IPOD_CONTROL/music/f07/s3.mp3")); // case-blind, as on FAT
        QVERIFY(!files.contains("/iPod_Control/Music/F07/S9.MP3"));
        QVERIFY(!files.contains("/iPod_Control/Music/F99/S1.MP3"));
        QVERIFY(!files.contains("/"));
        QCOMPARE(files.foldersRead(), 4); // the root, iPod_Control, Music and F07: the folders asked about, once each
    }

    void warnings_data()
    {
        QTest::addColumn<Playlist>("playlist");
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QList<PlaylistWarning>>("expected");
        using Kind = PlaylistWarning::Kind;
        QStringList three{":iPod_Control:Music:F00:A.mp3", ":iPod_Control:Music:F00:B.mp3", ":iPod_Control:Music:F00:A.mp3"};
        QTest::addRow("over the limit, repeats counted")
            << playlistOf("P", three) << "" << QList<PlaylistWarning>{{"P", Kind::overLimit, 3, 2}};
        QTest::addRow("missing file") << playlistOf("P", {":iPod_Control:Music:F00:Gone.mp3"}) << ""
                                      << QList<PlaylistWarning>{{"P", Kind::missingFiles, 1, 0}};
        QTest::addRow("259 bytes plays") << playlistOf("P", {":iPod_Control:Music:F00:" + longName}) << "/x"
                                         << QList<PlaylistWarning>{{"P", Kind::missingFiles, 1, 0}};
        QTest::addRow("260 bytes does not") << playlistOf("P", {":iPod_Control:Music:F00:" + longName}) << "/xy"
                                            << QList<PlaylistWarning>{{"P", Kind::longPaths, 1, 259}, {"P", Kind::missingFiles, 1, 0}};
        QTest::addRow("a character of three bytes counts three") << playlistOf("P", {":Music:" + QString(85, u'音')}) << ""
                                                              << QList<PlaylistWarning>{{"P", Kind::longPaths, 1, 259}, {"P", Kind::missingFiles, 1, 0}};
        QTest::addRow("the playlist's own path") << playlistOf(QString(250, u'N'), {}) << ""
                                                 << QList<PlaylistWarning>{{QString(250, u'N'), Kind::longFileName, 1, 259}};
    }

    void warnings()
    {
        QFETCH(Playlist, playlist);
        QFETCH(QString, prefix);
        QTemporaryDir dir;
        writeFile(dir.filePath("iPod_Control/Music/F00/A.mp3"), "x");
        writeFile(dir.filePath("iPod_Control/Music/F00/b.MP3"), "x");
        DeviceFileIndex files(dir.path());
        const ConversionOptions options{.customPathPrefix = prefix, .sanitizeFilenames = false};
        QTEST(PlaylistChecker(options, 2, &files).warnings(playlist), "expected");
    }

    void splitKeepsEachPartWithinTheLimit_data()
    {
        QTest::addColumn<int>("tracks");
        QTest::addColumn<QStringList>("parts"); // "name: tracks"
        QTest::addRow("at the limit") << 2 << QStringList{"P: 2"};
        QTest::addRow("one past it") << 3 << QStringList{"P (1 of 2): 2", "P (2 of 2): 1"};
    }

    void splitKeepsEachPartWithinTheLimit()
    {
        QFETCH(int, tracks);
        QStringList parts;
        for (const Playlist &part : splitToLimit(playlistOf("P", QList<QString>(tracks, ":a.mp3")), 2))
            parts.append(QStringLiteral("%1: %2").arg(part.name).arg(part.tracks.size()));
        QTEST(parts, "parts");
    }

    void existingFiles_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<PlaylistFileCheck>("expected");
        QTest::addRow("absolute, comments skipped")
            << QByteArray("#EXTM3U\n#EXTINF:1,x\n/iPod_Control/Music/F00/A.mp3\n\n") << PlaylistFileCheck{.entries = 1};
        QTest::addRow("backslashes, drive letter, case, CRLF")
            << QByteArray("C:\\iPod_Control\\MUSIC\\f00\\a.MP3\r\n") << PlaylistFileCheck{.entries = 1};
        QTest::addRow("relative to the playlist's folder")
            << QByteArray("../iPod_Control/Music/F00/A.mp3\nSide.mp3\n") << PlaylistFileCheck{.entries = 2};
        QTest::addRow("missing and past the limit")
            << QByteArray("/a.mp3\n/iPod_Control/Music/F00/A.mp3\n/iPod_Control/Music/F00/A.mp3\n")
            << PlaylistFileCheck{.entries = 3, .unresolved = 1, .pastLimit = 1};
        QTest::addRow("too long") << ("/" + QByteArray(259, 'x') + "\n") << PlaylistFileCheck{.entries = 1, .tooLong = 1};
        QTest::addRow("latin-1 .m3u") << QByteArray("/Caf\xe9.mp3\n") << PlaylistFileCheck{.entries = 1};
    }

    void existingFiles()
    {
        QFETCH(QByteArray, text);
        QTemporaryDir dir;
        writeFile(dir.filePath("iPod_Control/Music/F00/A.mp3"), "x");
        writeFile(dir.filePath("Caf\u00e9.mp3"), "x");
        writeFile(dir.filePath("Playlists/Side.mp3"), "x");
        writeFile(dir.filePath("Playlists/Rock.m3u"), text);
        DeviceFileIndex files(dir.path());
        QTEST(checkPlaylistFile(files, dir.path(), "Playlists/Rock.m3u", 2), "expected");
    }
};

QTEST_APPLESS_MAIN(TestPlayerChecks)
#include "tst_playerchecks.moc"
