#include "dbwriter/ArtworkDBWriter.h"
#include "dbwriter/ITunesDBWriter.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <unistd.h>

using namespace kestrune::testing;
using namespace kestrune::dbwriter;

namespace {

struct Run {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;

    [[nodiscard]] QJsonObject json() const { return QJsonDocument::fromJson(out).object(); }
};

Run cli(const QStringList &arguments, const QStringList &prefix = {})
{
    QProcess process;
    if (prefix.isEmpty())
        process.start(QStringLiteral(KESTRUNE_CLI_PATH), arguments);
    else // another program starts the tool: a shell, or setpriv
        process.start(prefix.first(), prefix.mid(1) + QStringList{KESTRUNE_CLI_PATH} + arguments);
    if (!process.waitForFinished(30000))
        qFatal("kestrune-cli did not finish");
    return Run{process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QStringList names(const QJsonArray &objects, const char *key)
{
    QStringList list;
    for (const QJsonValue &object : objects)
        list.append(object.toObject()[QLatin1StringView(key)].toString());
    return list;
}

// An iPod tree: master, "Rock: Live" (matches an existing file) and a smart "Chill".
struct IPod {
    QTemporaryDir dir;

    explicit IPod(QByteArray database = {})
    {
        if (database.isEmpty()) {
            PlaylistItem master{.name = QStringLiteral("Library"), .isMaster = true, .dbId = 1};
            master.entries = {{1}, {2}, {3}};
            PlaylistItem chill = PlaylistItem::of("Chill", {3, 1}, 18446744073709551615ull);
            chill.extraObjects = {StringObject::opaque(100)};
            database = ITunesDBWriter()
                           .addTrack(TrackItem::song(1, "Song One", "Band", ":iPod_Control:Music:F00:A.mp3", 61000))
                           .addTrack(TrackItem::song(2, "Song Two", "", ":iPod_Control:Music:F01:B.mp3", 1500))
                           .addTrack(TrackItem::song(3, "Drei", "Künstler", ":iPod_Control:Music:F02:C.mp3"))
                           .addPlaylist(master)
                           .addPlaylist(PlaylistItem::of("Rock: Live", {1, 2}, 42))
                           .addPlaylist(chill)
                           .build();
        }
        writeFile(path("iPod_Control/iTunes/iTunesDB"), database);
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
    void listings()
    {
        IPod ipod;
        const Run text = cli({"playlists", ipod.root()});
        QCOMPARE(text.exitCode, 0);
        QCOMPARE(text.out, "Database: " + ipod.path("iPod_Control/iTunes/iTunesDB").toUtf8() + "\n3 tracks, 3 playlists\n\n"
                           "Playlist    Tracks  Duration  Kind    On Rockbox\n"
                           "Library          3    4m 22s  master  -\n"
                           "Rock: Live       2    1m 02s  -       rock_ live.m3u\n"
                           "Chill            2    4m 21s  smart   -\n");

        const QJsonArray playlists = cli({"playlists", ipod.root(), "--json"}).json()["playlists"].toArray();
        QCOMPARE(QJsonDocument(playlists[1].toObject()).toJson(QJsonDocument::Compact),
                 R"({"dbId":"42","existingFile":"rock_ live.m3u","isMaster":false,"isSmart":false,"name":"Rock: Live",)"
                 R"("totalDurationSeconds":62,"trackCount":2,"trackIds":[1,2]})");
        QCOMPARE(playlists[2].toObject()["dbId"].toString(), "18446744073709551615");

        // A database file inside an iPod tree still knows the tree's playlists folder.
        QVERIFY(cli({"playlists", ipod.path("iPod_Control/iTunes/iTunesDB")}).out.contains("rock_ live.m3u"));

        const QJsonArray chill = cli({"tracks", ipod.root(), "--playlist", "Chill", "--json"}).json()["tracks"].toArray();
        QCOMPARE(names(chill, "title"), (QStringList{"Drei", "Song One"}));
        QCOMPARE(chill[1].toObject()["rockboxPath"].toString(), "/iPod_Control/Music/F00/A.mp3");
    }

    // Columns line up on a terminal: a wide character takes two columns, a combining accent none.
    void tablesAlignByDisplayWidth()
    {
        IPod ipod(ITunesDBWriter()
                      .addTrack(TrackItem::song(1, "東京", "A", ":a.mp3", 61000))
                      .addTrack(TrackItem::song(2, "Cafe\u0301", "A", ":b.mp3", 61000))
                      .addPlaylist(PlaylistItem::of("P", {1, 2}))
                      .build());
        const QString out = QString::fromUtf8(cli({"tracks", ipod.root(), "--playlist", "P"}).out);
        QVERIFY2(out.contains("\n 1  東京   A       1:01") && out.contains("\n 2  Cafe\u0301   A       1:01"), qPrintable(out));
    }

    void convertWritesFilesAndCleans()
    {
        IPod ipod;
        const QJsonObject json = cli({"convert", ipod.root(), "--json"}).json();
        QCOMPARE(json["destination"].toString(), ipod.path("Playlists"));
        QCOMPARE(json["dotFilesRemoved"].toInt(), 2);
        const QJsonObject rock = json["results"].toArray()[0].toObject();
        QCOMPARE(rock.keys(), (QStringList{"errorMessage", "filename", "isSuccess", "isUpdate", "path", "playlistName",
                                           "status", "trackCount"}));
        QCOMPARE(rock["filename"].toString(), "Rock_ Live.m3u8");
        QVERIFY(rock["isSuccess"].toBool() && rock["isUpdate"].toBool() && rock["errorMessage"].isNull());
        QCOMPARE(readFile(ipod.path("Playlists/Rock_ Live.m3u8")),
                 QByteArray("#EXTM3U\n#EXTINF:61,Band - Song One\n/iPod_Control/Music/F00/A.mp3\n"
                            "#EXTINF:1,Song Two\n/iPod_Control/Music/F01/B.mp3\n"));
        QCOMPARE(QDir(ipod.path("Playlists")).entryList(QDir::Files | QDir::Hidden, QDir::Name),
                 (QStringList{"Chill.m3u8", "Rock_ Live.m3u8", "rock_ live.m3u"}));

        // Again: every file already holds its bytes, so none is written, not even touched.
        const QDateTime written = QFileInfo(ipod.path("Playlists/Chill.m3u8")).lastModified();
        QTest::qWait(20);
        const Run text = cli({"convert", ipod.root()});
        QVERIFY(text.err.isEmpty());
        QCOMPARE(text.out, "  unchanged Rock_ Live.m3u8 (2 tracks)\n  unchanged Chill.m3u8 (2 tracks)\n"
                           "2 playlists in " + ipod.path("Playlists").toUtf8() + ": 0 written, 2 unchanged; 0 dot files removed\n");
        QCOMPARE(QFileInfo(ipod.path("Playlists/Chill.m3u8")).lastModified(), written);
        // Outside an iPod the folder's dot files are not the program's to remove.
        QTemporaryDir elsewhere;
        writeFile(elsewhere.filePath(".git/HEAD"), "ref");
        const Run dest = cli({"convert", ipod.root(), "--dest", elsewhere.path()});
        QVERIFY(dest.out.endsWith("; dot files left alone: the folder is not on an iPod\n"));
        QVERIFY(QFileInfo::exists(elsewhere.filePath(".git/HEAD")));
    }

    void convertOptionsShapeTheFiles()
    {
        IPod ipod;
        QTemporaryDir dest;
        QCOMPARE(cli({"convert", ipod.root(), "--dest", dest.path(), "--playlist", "Chill", "--m3u", "--no-extinf", "--prefix",
                      "/mnt/ipod/"}).exitCode, 0);
        QCOMPARE(readFile(dest.filePath("Chill.m3u")),
                 QByteArray("/mnt/ipod/iPod_Control/Music/F02/C.mp3\n/mnt/ipod/iPod_Control/Music/F00/A.mp3\n"));
        const Run dryRun = cli({"convert", ipod.root(), "--dry-run", "--json"});
        QCOMPARE(dryRun.json()["results"].toArray().size(), 2);
        QCOMPARE(QDir(ipod.path("Playlists")).entryList(QDir::Files | QDir::Hidden, QDir::Name),
                 (QStringList{".DS_Store", "._rock_ live.m3u", "rock_ live.m3u"}));
    }

    void convertChoosesPlaylists_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("written");
        QTest::addRow("every non-master playlist by default") << QStringList{} << QStringList{"Rock: Live", "Chill"};
        QTest::addRow("named, in database order") << QStringList{"--playlist", "Chill", "--playlist", "Rock: Live"}
                                                  << QStringList{"Rock: Live", "Chill"};
        QTest::addRow("with the master playlist") << QStringList{"--include-master"}
                                                  << QStringList{"Library", "Rock: Live", "Chill"};
    }

    void convertChoosesPlaylists()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, written);
        IPod ipod;
        QCOMPARE(names(cli(QStringList{"convert", ipod.root(), "--json"} + arguments).json()["results"].toArray(),
                       "playlistName"),
                 written);
    }

    void truncatedDatabaseLeavesExistingFiles()
    {
        const QByteArray whole = ITunesDBWriter()
                                     .addTrack(TrackItem::song(1, "A", {}, ":a.mp3"))
                                     .addPlaylist(PlaylistItem::of("Rock: Live", {1}))
                                     .addPlaylist(PlaylistItem::of("New", {1}))
                                     .build();
        IPod ipod(whole.left(whole.size() - 10)); // an interrupted sync
        writeFile(ipod.path("Playlists/Rock_ Live.m3u8"), "old");
        const Run run = cli({"convert", ipod.root()});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.contains("warning: the database looks truncated"), run.err.constData());
        QVERIFY2(run.out.contains("FAILED  Rock_ Live.m3u8 (1 track): not overwritten"), run.out.constData());
        QCOMPARE(readFile(ipod.path("Playlists/Rock_ Live.m3u8")), QByteArray("old"));
        QCOMPARE(cli({"convert", ipod.root(), "--force"}).exitCode, 0);
        QVERIFY(readFile(ipod.path("Playlists/Rock_ Live.m3u8")).startsWith("#EXTM3U"));
    }

    void playerProblemsAreNamed()
    {
        // An iPod Video: 2,000 entries kept; two music files missing; one path of 270 bytes.
        ITunesDBWriter writer;
        const QString longPath = ":iPod_Control:Music:F01:" + QString(246, u'L') + ".mp3";
        PlaylistItem big{.name = QString("Big")};
        for (quint32 id = 1; id <= 10; ++id)
            writer.addTrack(TrackItem::song(id, QString("Song %1").arg(id), "Band", QString(":iPod_Control:Music:F00:S%1.mp3").arg(id)));
        writer.addTrack(TrackItem::song(11, "Long", "Band", longPath));
        for (int entry = 0; entry < 2500; ++entry)
            big.entries.append(PlaylistEntry{.trackId = quint32(1 + entry % 10)});
        IPod ipod(writer.addPlaylist(big).addPlaylist(PlaylistItem::of("Small", {1, 11})).build());
        writeFile(ipod.path(".rockbox/rockbox-info.txt"), "Target: ipodvideo\n");
        for (int id = 1; id <= 8; ++id)
            writeFile(ipod.path(QString("iPod_Control/Music/F00/S%1.mp3").arg(id)), "music");
        writeFile(ipod.path(QString(longPath).replace(':', '/').mid(1)), "music");

        const QJsonArray warnings = cli({"convert", ipod.root(), "--json"}).json()["warnings"].toArray();
        QCOMPARE(QJsonDocument(warnings).toJson(QJsonDocument::Compact),
                 QByteArray(R"([{"count":2500,"kind":"overLimit","limit":2000,"playlistName":"Big"},)"
                            R"({"count":500,"kind":"missingFiles","limit":0,"playlistName":"Big"},)"
                            R"({"count":1,"kind":"longPaths","limit":259,"playlistName":"Small"}])"));
        const Run check = cli({"check", ipod.root()});
        QCOMPARE(check.exitCode, 1);
        QVERIFY(check.out.contains("Rockbox target ipodvideo: up to 2000 entries per playlist (the target's default)"));
        QVERIFY2(check.out.contains("Big.m3u8           2500      500         0         500  yes"), check.out.constData());
        QVERIFY(check.out.contains("Small.m3u8            2        0         1           0  yes"));

        QVERIFY(cli({"convert", ipod.root(), "--split-long"}).out.contains("wrote   Big (2 of 2).m3u8 (500 tracks)"));
        for (const char *part : {"Playlists/Big (1 of 2).m3u8", "Playlists/Big (2 of 2).m3u8"})
            QVERIFY(readFile(ipod.path(part)).count("\n/iPod_Control") <= 2000);
    }

    void foldersAndOnTheGoPlaylists()
    {
        IPod ipod(ITunesDBWriter()
                      .addTrack(TrackItem::song(7, "Seven", {}, ":a.mp3"))
                      .addTrack(TrackItem::song(5, "Five", {}, ":b.mp3"))
                      .addPlaylist({.name = QString("Rock"), .dbId = 10, .isFolder = true})
                      .addPlaylist({.name = QString("Seventies"), .dbId = 11, .isFolder = true, .parentDbId = 10})
                      .addPlaylist({.name = QString("Child"), .dbId = 12, .parentDbId = 11, .entries = {{7}}})
                      .addPlaylist(PlaylistItem::of("Top", {5}))
                      .build());
        writeFile(ipod.path("iPod_Control/iTunes/OTGPlaylistInfo"), onTheGoFile({1, 0}));
        const Run listed = cli({"playlists", ipod.root(), "--on-the-go"});
        QVERIFY2(listed.out.contains("Child        Rock / Seventies       1"), listed.out.constData());
        QVERIFY(listed.out.contains("Rock         -                      0"));
        QVERIFY(listed.out.contains("On-The-Go 1  -                      2"));
        const QJsonObject converted = cli({"convert", ipod.root(), "--folders", "flatten", "--on-the-go", "--json"}).json();
        QCOMPARE(names(converted["results"].toArray(), "filename"),
                 (QStringList{"Rock - Seventies - Child.m3u8", "Top.m3u8", "On-The-Go 1.m3u8"}));
        QCOMPARE(readFile(ipod.path("Playlists/On-The-Go 1.m3u8")).count(".mp3"), 2);
        // Without the options, folders are playlists like the others and On-The-Go files are not read.
        QCOMPARE(names(cli({"convert", ipod.root(), "--json"}).json()["results"].toArray(), "playlistName"),
                 (QStringList{"Rock", "Seventies", "Child", "Top"}));
    }

    void statsGoToRockbox()
    {
        TrackItem song = TrackItem::song(1, "Song One", "Band", ":iPod_Control:Music:F00:A.mp3", 61000);
        song.playCount = 7;
        song.rating = 100;
        song.lastPlayed = 100;
        IPod ipod(ITunesDBWriter().addTrack(song).addTrack(TrackItem::song(2, "Quiet", {}, ":iPod_Control:Music:F00:B.mp3")).build());
        writeFile(ipod.path("iPod_Control/Music/F00/a.mp3"), "music");
        const Run summary = cli({"stats", ipod.root()});
        QVERIFY2(summary.out.contains("1 track with statistics: 7 plays, 1 rated\n"), summary.out.constData());
        QVERIFY(summary.out.contains("    7      5  Song One  Band\n"));
        QCOMPARE(cli({"stats", ipod.root(), "--write"}).exitCode, 1); // no Rockbox on this device yet

        QDir().mkpath(ipod.path(".rockbox"));
        QVERIFY(cli({"stats", ipod.root(), "--write"}).out.contains("Database > Import Modifications"));
        QVERIFY(readFile(ipod.path(".rockbox/database_changelog.txt")).contains("filename=\"/iPod_Control/Music/F00/a.mp3\""));
        QCOMPARE(cli({"stats", ipod.root(), "--write"}).exitCode, 1); // it would replace the changelog
        const QJsonObject forced = cli({"stats", ipod.root(), "--write", "--force", "--json"}).json();
        QCOMPARE(forced["changelog"].toObject()["written"].toInt(), 1);
    }

    // After each iTunes sync: the first sync writes everything, the second only what changed, and removes
    // the files of a playlist deleted and of one renamed, never the user's own.
    void twoSyncsInARow()
    {
        TrackItem played = TrackItem::song(1, "Song One", "Band", ":iPod_Control:Music:F00:A.mp3", 61000);
        played.playCount = 4;
        const auto library = [&played](const char *rockName, bool withGone) {
            ITunesDBWriter writer;
            writer.addTrack(played).addPlaylist(PlaylistItem::of(rockName, {1}, 42)).addPlaylist(PlaylistItem::of("Chill", {1}, 43));
            if (withGone)
                writer.addPlaylist(PlaylistItem::of("Gone", {1}, 44));
            return writer.build();
        };
        IPod ipod(library("Rock: Live", true));
        writeFile(ipod.path("iPod_Control/Music/F00/A.mp3"), "music");
        QDir().mkpath(ipod.path(".rockbox"));
        const QJsonObject first = cli({"sync", ipod.root(), "--json"}).json();
        QCOMPARE(names(first["playlists"].toObject()["results"].toArray(), "status"), (QStringList{"updated", "written", "written"})); // "Rock: Live" matched rock_ live.m3u
        QCOMPARE(first["statistics"].toObject()["status"].toString(), "written");
        QVERIFY(first["covers"].toObject()["notApplicable"].toString().contains("no artwork database"));

        writeFile(ipod.path("iPod_Control/iTunes/iTunesDB"), library("Live Rock", false));
        const Run second = cli({"sync", ipod.root()});
        QCOMPARE(second.exitCode, 0);
        QCOMPARE(second.out.left(second.out.indexOf("\n2 playlists")),
                 "Playlists:\n  wrote   Live Rock.m3u8 (1 track)\n  unchanged Chill.m3u8 (1 track)\n"
                 "  removed Rock_ Live.m3u8 (renamed in iTunes)\n  removed Gone.m3u8 (deleted in iTunes)");
        QVERIFY2(second.out.contains("Play counts and ratings:\n  unchanged "), second.out.constData());
        QCOMPARE(QDir(ipod.path("Playlists")).entryList(QDir::Files, QDir::Name),
                 (QStringList{"Chill.m3u8", "Live Rock.m3u8", "rock_ live.m3u"}));
    }

    // Covers from the artwork database, under the names Rockbox looks up; a second run writes nothing.
    void artWritesCovers()
    {
        TrackItem track = TrackItem::song(1, "Song One", "Guest", ":iPod_Control:Music:F00:A.mp3");
        track.dbId = 77;
        track.strings += {StringObject::utf16(3, "Album: One"), StringObject::utf16(22, "Band")};
        IPod ipod(ITunesDBWriter().addTrack(track).build());
        ArtworkWriter artwork;
        artwork.addImage(77, {{1060, 320, 320, ArtworkWriter::Picture::filled(320, 320, [](int x, int) { return quint16(x); })}});
        writeFile(ipod.path("iPod_Control/Artwork/ArtworkDB"), artwork.database());
        writeFile(ipod.path("iPod_Control/Artwork/F1060_1.ithmb"), artwork.thumbnailFiles().first());
        QDir().mkpath(ipod.path(".rockbox"));
        const Run first = cli({"art", ipod.root()});
        QCOMPARE(first.exitCode, 0);
        QVERIFY2(first.out.startsWith("  wrote   Band-Album_ One.jpg (320x320)\n1 cover in "), first.out.constData());
        const QJsonObject second = cli({"art", ipod.root(), "--json"}).json();
        QCOMPARE(names(second["covers"].toArray(), "status"), QStringList{"unchanged"});
    }

    void filesAndDevices()
    {
        IPod ipod;
        const QJsonObject item = cli({"files", ipod.path("Playlists"), "--json"}).json()["files"].toArray()[0].toObject();
        QVERIFY(item["name"] == "rock_ live.m3u" && item["sizeBytes"] == 4);
        QCOMPARE(cli({"clean", ipod.root()}).out, "2 dot files removed from " + ipod.root().toUtf8() + "\n");

        writeFile(ipod.path(".rockbox/rockbox-info.txt"), "Target: ipod6g\n");
        QTemporaryDir volumes;
        QVERIFY(QDir(volumes.path()).mkdir("USB STICK"));
        QVERIFY(QFile::link(ipod.root(), volumes.filePath("IPOD")));
        const QJsonArray devices = cli({"devices", "--volumes", volumes.path(), "--json"}).json()["devices"].toArray();
        QCOMPARE(devices.size(), 1);
        const QJsonObject device = devices[0].toObject();
        QCOMPARE(device.keys(), (QStringList{"database", "freeDiskSpace", "mountPath", "name", "playlistLimit",
                                             "playlistsFolder", "rockboxTarget", "totalDiskSpace"}));
        QCOMPARE(device["rockboxTarget"].toString(), "ipod6g");
        QCOMPARE(device["playlistLimit"].toInt(), 10000);
    }

    // A hostile or unlucky tree: nothing outside the device changes, and the run says why it refused.
    void hostileTrees_data()
    {
        QTest::addColumn<QString>("setup");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("message");
        QTest::addRow("clean: a linked iPod_Control") << "link @outside/iPod_Control @root/iPod_Control" << QStringList{"clean", "@outside"}
                                                     << 2 << QByteArray("@outside/iPod_Control' is a symbolic link");
        QTest::addRow("convert --dest: a linked iPod_Control")
            << "link @outside/iPod_Control @root/iPod_Control" << QStringList{"convert", "@root", "--dest", "@outside"} << 2
            << QByteArray("@outside/iPod_Control' is a symbolic link");
        QTest::addRow("convert: a linked Playlists") << "replace @root/Playlists @outside" << QStringList{"convert", "@root"} << 1
                                                    << QByteArray("@root/Playlists” is a symbolic link");
        QTest::addRow("stats --write: a linked .rockbox") << "link @root/.rockbox @outside" << QStringList{"stats", "@root", "--write"}
                                                         << 1 << QByteArray("@root/.rockbox” is a symbolic link");
        QTest::addRow("art: a linked .rockbox") << "link @root/.rockbox @outside" << QStringList{"art", "@root"}
                                               << 1 << QByteArray("@root/.rockbox” is a symbolic link");
        QTest::addRow("a prefix with a line feed") << "" << QStringList{"convert", "@root", "--prefix", "/a\nb"} << 2
                                                   << QByteArray("--prefix holds the control character U+000A (line feed)");
        QTest::addRow("another run holds the device") << "hold" << QStringList{"convert", "@root"} << 1
                                                      << QByteArray("@root is busy: flock (pid ");
        QTest::addRow("errors as JSON") << "hold" << QStringList{"convert", "@root", "--json"} << 1
                                        << QByteArray("\"error\": \"convert: @root is busy: flock (pid ");
    }

    void hostileTrees()
    {
        QFETCH(QString, setup);
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, message);
        IPod ipod;
        QTemporaryDir outside;
        writeFile(outside.filePath(".ssh/id"), "secret");
        writeFile(outside.filePath("Rock_ Live.m3u8"), "not ours");
        const QString root = ipod.root();
        const auto expand = [&root, &outside](QString text) { return text.replace("@root", root).replace("@outside", outside.path()); };
        const QStringList step = expand(setup).split(' ');
        QProcess holder;
        if (step.first() == "replace")
            QVERIFY(QDir(step.at(1)).removeRecursively());
        if (step.first() == "link" || step.first() == "replace")
            QVERIFY(QFile::link(step.at(2), step.at(1)));
        if (step.first() == "hold") { // another process holds the device's lock while this run starts
            holder.start("flock", {ipod.root(), "-c", "echo held; sleep 5"});
            QVERIFY(holder.waitForReadyRead(5000));
        }
        const QMap<QString, QByteArray> untouched = snapshotTree(outside.path());
        const QMap<QString, QByteArray> before = snapshotTree(ipod.path("Playlists"));
        qputenv("KESTRUNE_LOCK_WAIT_MS", "200");
        const Run run = cli(arguments.replaceInStrings("@root", ipod.root()).replaceInStrings("@outside", outside.path()));
        holder.kill();
        holder.waitForFinished();
        QTEST(run.exitCode, "status");
        QVERIFY2((arguments.contains("--json") ? run.out : run.out + run.err).contains(expand(message).toUtf8()), run.err.constData());
        QCOMPARE(snapshotTree(outside.path()), untouched);
        if (!QFileInfo(ipod.path("Playlists")).isSymLink())
            QCOMPARE(snapshotTree(ipod.path("Playlists")), before);
    }

    // Names that clash but for case, names that are not UTF-8, and paths the system will not show.
    void namesAndPermissions()
    {
        IPod ipod(ITunesDBWriter()
                      .addTrack(TrackItem::song(1, "A", {}, ":a.mp3"))
                      .addPlaylist(PlaylistItem::of("Rock", {1}))
                      .addPlaylist(PlaylistItem::of("ROCK", {1}))
                      .build());
        const Run converted = cli({"convert", ipod.root()});
        QVERIFY2(converted.out.contains("  wrote   ROCK (2).m3u8 (1 track; not ROCK.m3u8, which another playlist's file is on "
                                        "a case-blind device)"),
                 converted.out.constData());
        const Run listed = cli({"playlists", ipod.root()});
        QVERIFY2(listed.out.contains("ROCK           1    3m 20s  -     ROCK (2).m3u8"), listed.out.constData());

        // A name that is not UTF-8, made and handed over as bytes.
        const QByteArray latin1 = QFile::encodeName(ipod.path("Playlists")) + "/caf\xe9.m3u8";
        std::fclose(std::fopen(latin1.constData(), "w"));
        const auto removeIt = qScopeGuard([&latin1] { std::remove(latin1.constData()); });
        const QJsonArray files = cli({"files", ipod.path("Playlists"), "--json"}).json()["files"].toArray();
        QCOMPARE(files[0].toObject()["name"].toString(), "caf\\xE9.m3u8");
        QCOMPARE(files[0].toObject()["nameBytes"].toString(), "636166e92e6d337538");
        QVERIFY(cli({"files", ipod.path("Playlists")}).out.contains("caf\\xE9.m3u8"));
        const Run latin1Argument = cli({ipod.path("Playlists")}, {"sh", "-c", "exec \"$0\" playlists \"$1\"/caf*"});
        QVERIFY2(latin1Argument.err.contains("/caf\\xE9.m3u8' is not valid UTF-8"), latin1Argument.err.constData());

        // As root, without the capabilities that pass over file permissions; as anyone else, as it is.
        const QStringList unprivileged = ::geteuid() != 0 ? QStringList{} : QStringList{
            "setpriv", "--inh-caps=-all", "--bounding-set=-dac_override,-dac_read_search,-fowner", "--"};
        writeFile(ipod.path("Playlists/Locked/._junk"), "junk");
        QFile::setPermissions(ipod.path("Playlists/Locked"), QFile::ReadOwner | QFile::ExeOwner);
        const Run clean = cli({"clean", ipod.root()}, unprivileged);
        QFile::setPermissions(ipod.path("Playlists/Locked"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(clean.exitCode, 1);
        QVERIFY2(clean.out.contains("could not remove " + ipod.path("Playlists/Locked/._junk").toUtf8() + ": Permission denied."),
                 clean.out.constData());
        QFile::setPermissions(ipod.path("iPod_Control"), {});
        const Run unreadable = cli({"playlists", ipod.root()}, unprivileged);
        QFile::setPermissions(ipod.path("iPod_Control"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(unreadable.exitCode, 2);
        QVERIFY2(unreadable.err.contains("Permission denied: '" + ipod.path("iPod_Control").toUtf8()), unreadable.err.constData());
    }

    void usage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("message"); // the one line on standard error; for help, how standard output starts
        QTest::addRow("version") << QStringList{"--version"} << QByteArray("kestrune-cli " KESTRUNE_VERSION "\n");
        QTest::addRow("usage") << QStringList{"--help"} << QByteArray("kestrune-cli " KESTRUNE_VERSION "\n\nUsage:");
        QTest::addRow("a command's help") << QStringList{"convert", "--help"} << QByteArray("Usage: kestrune-cli convert SOURCE");
        QTest::addRow("help before other arguments") << QStringList{"check", "-h", "nothing"} << QByteArray("Usage: kestrune-cli check");
        QTest::addRow("no command") << QStringList{} << QByteArray("no command given (see 'kestrune-cli --help')");
        QTest::addRow("unknown command") << QStringList{"export"} << QByteArray("unknown command 'export' (see 'kestrune-cli --help')");
        QTest::addRow("unknown option") << QStringList{"playlists", "@root", "--bogus"} << QByteArray("bogus");
        QTest::addRow("one argument too many") << QStringList{"playlists", "@root", "@root"}
                                               << QByteArray("playlists: expected 1 argument, got 2 (see 'kestrune-cli playlists --help')");
        QTest::addRow("missing source") << QStringList{"playlists", "@root/nothing"} << QByteArray("does not exist");
        QTest::addRow("folder without a database") << QStringList{"playlists", "@root/Playlists"} << QByteArray("no iPod database");
        QTest::addRow("unreadable database") << QStringList{"playlists", "@root/broken.db"}
                                             << QByteArray("File non valido: intestazione iTunesDB ('mhbd') mancante o corrotta.");
        QTest::addRow("bare database without destination") << QStringList{"convert", "@root/library.db"} << QByteArray("give --dest");
        QTest::addRow("unknown playlist") << QStringList{"convert", "@root", "--playlist", "Nope"} << QByteArray("no playlist named 'Nope'");
        QTest::addRow("cleaning outside an iPod") << QStringList{"clean", "@root/.."} << QByteArray("is not on an iPod");
        QTest::addRow("checking a bare database") << QStringList{"check", "@root/library.db"} << QByteArray("not a bare database");
        QTest::addRow("covers without Rockbox") << QStringList{"art", "@root"} << QByteArray("  The device has no .rockbox folder");
        QTest::addRow("a cover size that is none") << QStringList{"art", "@root", "--size", "120"} << QByteArray("--size takes WIDTHxHEIGHT");
    }

    void usage()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, message);
        IPod ipod;
        writeFile(ipod.path("broken.db"), QByteArray(64, 'x'));
        QFile::copy(ipod.path("iPod_Control/iTunes/iTunesDB"), ipod.path("library.db"));
        arguments.replaceInStrings("@root", ipod.root());
        const Run run = cli(arguments);
        if (run.exitCode == 0) {
            QVERIFY2(run.out.startsWith(message) && run.err.isEmpty(), run.out.constData());
            return;
        }
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.out.isEmpty());
        QCOMPARE(run.err.count('\n'), 1); // one line
        QVERIFY2(run.err.contains(message), run.err.constData());
    }
};

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
