#include "dbwriter/ITunesDBWriter.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace kestrune::testing;
using namespace kestrune::dbwriter;

namespace {

struct Run {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;

    [[nodiscard]] QJsonObject json() const { return QJsonDocument::fromJson(out).object(); }
};

Run cli(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(KESTRUNE_CLI_PATH), arguments);
    if (!process.waitForFinished(30000))
        qFatal("kestrune-cli did not finish");
    return Run{process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

// An iPod tree: master, "Rock: Live" (matches an existing file), a smart "Chill", and a bad "a/b".
struct IPod {
    QTemporaryDir dir;

    IPod()
    {
        PlaylistItem master{.name = QStringLiteral("Library"), .isMaster = true, .dbId = 1};
        master.entries = {{1}, {2}, {3}};
        PlaylistItem chill = PlaylistItem::of("Chill", {3, 1}, 18446744073709551615ull);
        chill.extraObjects = {StringObject::opaque(100)};
        const QByteArray db = ITunesDBWriter()
                                  .addTrack(TrackItem::song(1, "Song One", "Band", ":iPod_Control:Music:F00:A.mp3", 61000))
                                  .addTrack(TrackItem::song(2, "Song Two", "", ":iPod_Control:Music:F01:B.mp3", 1500))
                                  .addTrack(TrackItem::song(3, "Drei", "Künstler", ":iPod_Control:Music:F02:C.mp3"))
                                  .addPlaylist(master)
                                  .addPlaylist(PlaylistItem::of("Rock: Live", {1, 2}, 42))
                                  .addPlaylist(chill)
                                  .build();
        writeFile(path("iPod_Control/iTunes/iTunesDB"), db);
        writeFile(path("Playlists/rock_ live.m3u"), "old\n");
        writeFile(path("Playlists/._rock_ live.m3u"), "junk");
        writeFile(path("Playlists/.DS_Store"), "junk");
    }

    [[nodiscard]] QString root() const { return dir.path(); }
    [[nodiscard]] QString path(const QString &relative) const { return dir.filePath(relative); }
};

} // namespace

class TestCli : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void playlistsJson();
    void tracksJson();
    void convertWritesFilesAndCleans();
    void convertOptionsShapeTheFiles();
    void convertDryRunChangesNothing();
    void convertChoosesPlaylists_data();
    void convertChoosesPlaylists();
    void convertReportsFailedPlaylists();
    void filesAndClean();
    void devicesAmongFolderEntries();
    void errors_data();
    void errors();
    void versionAndHelp();
};

void TestCli::playlistsJson()
{
    IPod ipod;
    const Run run = cli({"playlists", ipod.root(), "--json"});
    QCOMPARE(run.exitCode, 0);
    const QJsonObject json = run.json();
    QCOMPARE(json["database"].toString(), ipod.path("iPod_Control/iTunes/iTunesDB"));
    QCOMPARE(json["trackCount"].toInt(), 3);
    const QJsonArray playlists = json["playlists"].toArray();
    QCOMPARE(playlists.size(), 3);
    const QJsonObject rock = playlists[1].toObject();
    QCOMPARE(rock.keys(), (QStringList{"dbId", "existingFile", "isMaster", "isSmart", "name", "totalDurationSeconds",
                                       "trackCount", "trackIds"}));
    QCOMPARE(rock["name"].toString(), "Rock: Live");
    QCOMPARE(rock["dbId"].toString(), "42");
    QCOMPARE(rock["existingFile"].toString(), "rock_ live.m3u");
    QCOMPARE(rock["trackIds"].toArray(), (QJsonArray{1, 2}));
    QCOMPARE(rock["totalDurationSeconds"].toInt(), 62);
    const QJsonObject chill = playlists[2].toObject();
    QCOMPARE(chill["dbId"].toString(), "18446744073709551615");
    QVERIFY(chill["isSmart"].toBool());
    QVERIFY(chill["existingFile"].isNull());
    QVERIFY(playlists[0].toObject()["isMaster"].toBool());
}

void TestCli::tracksJson()
{
    IPod ipod;
    const Run all = cli({"tracks", ipod.root(), "--json"});
    QCOMPARE(all.exitCode, 0);
    const QJsonArray tracks = all.json()["tracks"].toArray();
    QCOMPARE(tracks.size(), 3);
    const QJsonObject first = tracks[0].toObject();
    QCOMPARE(first.keys(), (QStringList{"album", "artist", "bitrate", "composer", "fileSize", "genre", "id",
                                        "ipodPath", "rockboxPath", "title", "totalTimeMs", "trackNumber", "year"}));
    QCOMPARE(first["rockboxPath"].toString(), "/iPod_Control/Music/F00/A.mp3");

    const Run chill = cli({"tracks", ipod.root(), "--playlist", "Chill", "--json"});
    const QJsonArray chillTracks = chill.json()["tracks"].toArray();
    QCOMPARE(chillTracks.size(), 2);
    QCOMPARE(chillTracks[0].toObject()["title"].toString(), "Drei");
    QCOMPARE(chillTracks[1].toObject()["id"].toInt(), 1);
}

void TestCli::convertWritesFilesAndCleans()
{
    IPod ipod;
    const Run run = cli({"convert", ipod.root(), "--json"});
    QCOMPARE(run.exitCode, 0);
    const QJsonObject json = run.json();
    QCOMPARE(json["destination"].toString(), ipod.path("Playlists"));
    QCOMPARE(json["dotFilesRemoved"].toInt(), 2);
    const QJsonArray results = json["results"].toArray();
    QCOMPARE(results.size(), 2);
    const QJsonObject rock = results[0].toObject();
    QCOMPARE(rock.keys(), (QStringList{"errorMessage", "filename", "isSuccess", "isUpdate", "path", "playlistName",
                                       "trackCount"}));
    QCOMPARE(rock["playlistName"].toString(), "Rock: Live");
    QCOMPARE(rock["filename"].toString(), "Rock_ Live.m3u8");
    QCOMPARE(rock["path"].toString(), ipod.path("Playlists/Rock_ Live.m3u8"));
    QVERIFY(rock["isSuccess"].toBool());
    QVERIFY(rock["isUpdate"].toBool());
    QVERIFY(rock["errorMessage"].isNull());
    QCOMPARE(results[1].toObject()["playlistName"].toString(), "Chill");

    QCOMPARE(readFile(ipod.path("Playlists/Rock_ Live.m3u8")),
             QByteArray("#EXTM3U\n#EXTINF:61,Band - Song One\n/iPod_Control/Music/F00/A.mp3\n"
                        "#EXTINF:1,Song Two\n/iPod_Control/Music/F01/B.mp3\n"));
    QCOMPARE(readFile(ipod.path("Playlists/rock_ live.m3u")), QByteArray("old\n"));
    QCOMPARE(QDir(ipod.path("Playlists")).entryList(QDir::Files | QDir::Hidden, QDir::Name),
             (QStringList{"Chill.m3u8", "Rock_ Live.m3u8", "rock_ live.m3u"}));

    const Run text = cli({"convert", ipod.root()});
    QCOMPARE(text.exitCode, 0);
    QVERIFY(text.out.contains("updated Rock_ Live.m3u8 (2 tracks)"));
    QVERIFY(text.out.contains("2 of 2 playlist(s) written to"));
}

void TestCli::convertOptionsShapeTheFiles()
{
    IPod ipod;
    QTemporaryDir dest;
    const Run run = cli({"convert", ipod.root(), "--dest", dest.path(), "--playlist", "Chill", "--m3u", "--no-extinf",
                         "--prefix", "/mnt/ipod/"});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(readFile(dest.filePath("Chill.m3u")),
             QByteArray("/mnt/ipod/iPod_Control/Music/F02/C.mp3\n/mnt/ipod/iPod_Control/Music/F00/A.mp3\n"));
    QVERIFY(!QFileInfo::exists(ipod.path("Playlists/Chill.m3u8")));
}

void TestCli::convertDryRunChangesNothing()
{
    IPod ipod;
    const Run run = cli({"convert", ipod.root(), "--dry-run", "--json"});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.json()["results"].toArray().size(), 2);
    QCOMPARE(run.json()["dotFilesRemoved"].toInt(), 0);
    QCOMPARE(QDir(ipod.path("Playlists")).entryList(QDir::Files | QDir::Hidden, QDir::Name),
             (QStringList{".DS_Store", "._rock_ live.m3u", "rock_ live.m3u"}));
}

void TestCli::convertChoosesPlaylists_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("written");
    QTest::addRow("every non-master playlist by default") << QStringList{} << QStringList{"Rock: Live", "Chill"};
    QTest::addRow("named, in database order") << QStringList{"--playlist", "Chill", "--playlist", "Rock: Live"}
                                              << QStringList{"Rock: Live", "Chill"};
    QTest::addRow("with the master playlist") << QStringList{"--include-master"}
                                              << QStringList{"Library", "Rock: Live", "Chill"};
    QTest::addRow("a named master playlist") << QStringList{"--playlist", "Library"} << QStringList{"Library"};
}

void TestCli::convertChoosesPlaylists()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, written);
    IPod ipod;
    const Run run = cli(QStringList{"convert", ipod.root(), "--json"} + arguments);
    QCOMPARE(run.exitCode, 0);
    QStringList names;
    for (const QJsonValue &result : run.json()["results"].toArray())
        names.append(result.toObject()["playlistName"].toString());
    QCOMPARE(names, written);
}

void TestCli::convertReportsFailedPlaylists()
{
    QTemporaryDir dir;
    writeFile(dir.filePath("iTunesDB"), ITunesDBWriter()
                                        .addPlaylist(PlaylistItem::of("Good", {}))
                                        .addPlaylist(PlaylistItem::of("Sub/Folder", {}))
                                        .addPlaylist(PlaylistItem::of("../Escape", {}))
                                        .build());
    const QString dest = dir.filePath("out");
    const Run run = cli({"convert", dir.filePath("iTunesDB"), "--dest", dest, "--no-sanitize"});
    QCOMPARE(run.exitCode, 1);
    QVERIFY(run.out.contains("wrote   Good.m3u8"));
    QVERIFY(run.out.contains("FAILED  Sub/Folder.m3u8"));
    QVERIFY(run.out.contains("FAILED  ../Escape.m3u8"));
    QVERIFY(run.out.contains("1 of 3 playlist(s) written"));
    QCOMPARE(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name),
             (QStringList{"iTunesDB", "out"}));
}

void TestCli::filesAndClean()
{
    IPod ipod;
    const Run files = cli({"files", ipod.path("Playlists"), "--json"});
    QCOMPARE(files.exitCode, 0);
    const QJsonArray items = files.json()["files"].toArray();
    QCOMPARE(items.size(), 1);
    const QJsonObject item = items[0].toObject();
    QCOMPARE(item["name"].toString(), "rock_ live.m3u");
    QCOMPARE(item["baseName"].toString(), "rock_ live");
    QCOMPARE(item["fileURL"].toString(), ipod.path("Playlists/rock_ live.m3u"));
    QCOMPARE(item["sizeBytes"].toInt(), 4);
    QVERIFY(QDateTime::fromString(item["modificationDate"].toString(), Qt::ISODate).isValid());

    const Run clean = cli({"clean", ipod.root()});
    QCOMPARE(clean.exitCode, 0);
    QVERIFY(clean.out.startsWith("2 dot file(s) removed"));
}

void TestCli::devicesAmongFolderEntries()
{
    IPod ipod;
    QTemporaryDir volumes;
    QVERIFY(QDir(volumes.path()).mkdir("USB STICK"));
    QVERIFY(QFile::link(ipod.root(), volumes.filePath("IPOD")));
    const Run run = cli({"devices", "--volumes", volumes.path(), "--json"});
    QCOMPARE(run.exitCode, 0);
    const QJsonArray devices = run.json()["devices"].toArray();
    QCOMPARE(devices.size(), 1);
    const QJsonObject device = devices[0].toObject();
    QCOMPARE(device.keys(), (QStringList{"database", "freeDiskSpace", "mountPath", "name", "playlistsFolder",
                                         "totalDiskSpace"}));
    QCOMPARE(device["mountPath"].toString(), volumes.filePath("IPOD"));
    QCOMPARE(device["database"].toString(), volumes.filePath("IPOD/iPod_Control/iTunes/iTunesDB"));
    QCOMPARE(device["playlistsFolder"].toString(), volumes.filePath("IPOD/Playlists"));
    QVERIFY(device["freeDiskSpace"].toDouble() > 0);

    const Run text = cli({"devices", "--volumes", volumes.path()});
    QVERIFY(text.out.contains("IPOD"));
    QCOMPARE(cli({"devices", "--volumes", volumes.filePath("none")}).exitCode, 2);
}

void TestCli::errors_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    QTest::addRow("no command") << QStringList{} << QByteArray("no command given");
    QTest::addRow("unknown command") << QStringList{"export"} << QByteArray("unknown command 'export'");
    QTest::addRow("unknown option") << QStringList{"playlists", "@root", "--bogus"} << QByteArray("bogus");
    QTest::addRow("missing source") << QStringList{"playlists", "@root/nothing"} << QByteArray("does not exist");
    QTest::addRow("folder without a database") << QStringList{"playlists", "@root/Playlists"}
                                               << QByteArray("no iPod database");
    QTest::addRow("unreadable database") << QStringList{"playlists", "@root/broken.db"}
                                         << QByteArray("File non valido: intestazione iTunesDB ('mhbd') mancante o corrotta.");
    QTest::addRow("too small database") << QStringList{"convert", "@root/tiny.db", "--dest", "@root/out"}
                                        << QByteArray("Il file database è troppo piccolo o incompleto.");
    QTest::addRow("bare database without destination") << QStringList{"convert", "@root/library.db"}
                                                         << QByteArray("give --dest");
    QTest::addRow("unknown playlist") << QStringList{"convert", "@root", "--playlist", "Nope"}
                                      << QByteArray("no playlist named 'Nope'");
    QTest::addRow("files of a missing folder") << QStringList{"files", "@root/none"} << QByteArray("is not a folder");
}

void TestCli::errors()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, message);
    IPod ipod;
    writeFile(ipod.path("broken.db"), QByteArray(64, 'x'));
    writeFile(ipod.path("tiny.db"), "mhbd");
    QFile::copy(ipod.path("iPod_Control/iTunes/iTunesDB"), ipod.path("library.db"));
    arguments.replaceInStrings("@root", ipod.root());
    const Run run = cli(arguments);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.contains(message), run.err.constData());
    QVERIFY(!QFileInfo::exists(ipod.path("out")));
}

void TestCli::versionAndHelp()
{
    QCOMPARE(cli({"--version"}).out, QByteArray("kestrune-cli " KESTRUNE_VERSION "\n"));
    const Run help = cli({"--help"});
    QCOMPARE(help.exitCode, 0);
    QVERIFY(help.out.contains("convert SOURCE"));
}

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
