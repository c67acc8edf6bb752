// kestrune-cli on a real FAT32 volume: the vfat driver of a user-mode Linux kernel, with faults switched
// in through device-mapper while a run writes (see uml-run.sh and guest-init.sh beside this file).
#include "core/ITunesDBParser.h"
#include "dbwriter/ArtworkDBWriter.h"
#include "dbwriter/ITunesDBWriter.h"
#include "export/RockboxGenerator.h"
#include "support/TestFiles.h"

#include <QCryptographicHash>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;
using namespace kestrune::dbwriter;
using namespace kestrune::testing;

namespace {

// What a guest run left behind.
struct Outcome {
    int status = -1; // of the scenario's `run cli` command
    QString out;
    QString err;
    QString fsck;
    int fsckStatus = -1;
    QMap<QString, QByteArray> files; // every file on the volume afterwards: path -> SHA-1 ("unreadable")
    QString scenarioOut;
};

QByteArray sha1(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex();
}

QString oldContent(int n)
{
    return QStringLiteral("#EXTM3U\n# the old playlist %1\n").arg(n);
}

// An iPod tree on the host: the database of `playlists`, and an old file for each playlist named in `old`.
class Device {
public:
    explicit Device(const QList<PlaylistItem> &playlists, int oldFiles = 0)
    {
        ITunesDBWriter writer;
        for (quint32 id = 1; id <= 20; ++id)
            writer.addTrack(TrackItem::song(id, QStringLiteral("Song %1").arg(id), "Band",
                                            QStringLiteral(":iPod_Control:Music:F%1:S%2.mp3").arg(id % 50, 2, 10, QChar(u'0')).arg(id)));
        for (const PlaylistItem &playlist : playlists)
            writer.addPlaylist(playlist);
        m_database = writer.build();
        writeFile(tree("iPod_Control/iTunes/iTunesDB"), m_database);
        for (int n = 0; n < oldFiles; ++n)
            writeFile(tree(QStringLiteral("Playlists/%1.m3u8").arg(playlists.at(n).name.value_or(QString()))), oldContent(n).toUtf8());
    }

    static QList<PlaylistItem> numbered(int count)
    {
        QList<PlaylistItem> playlists;
        for (int n = 0; n < count; ++n) {
            QList<quint32> ids;
            for (int t = 0; t < 10 + n % 10; ++t)
                ids.append(quint32(1 + (n + t) % 20));
            playlists.append(PlaylistItem::of(QStringLiteral("Playlist %1").arg(n, 4, 10, QChar(u'0')), ids));
        }
        return playlists;
    }

    [[nodiscard]] QString tree(const QString &relative = {}) const { return m_job.filePath("tree/" + relative); }

    // The SHA-1 of the file each playlist gets from a run, by path on the volume.
    [[nodiscard]] QMap<QString, QByteArray> newFiles() const
    {
        QMap<QString, QByteArray> files;
        const RockboxGenerator generator;
        for (const Playlist &playlist : ITunesDBParser().parse(m_database).playlists) {
            files.insert("Playlists/" + RockboxGenerator::playlistFilename(playlist, {}),
                         sha1(generator.generateM3UContent(playlist, {}).toUtf8()));
        }
        return files;
    }

    // Boots the guest on a fresh volume holding this tree, runs `scenario` (after the tree is copied
    // on) and reads what it left. Skips the test, with the reason, where the user-mode kernel cannot run.
    Outcome run(const QString &scenario)
    {
        writeFile(m_job.filePath("scenario.sh"),
                  ("CLI=" KESTRUNE_CLI_PATH "\npopulate \"$JOB/tree\"\n" + scenario).toUtf8());
        QProcess uml;
        uml.start("bash", {KESTRUNE_SOURCE_DIR "/tests/fat32/uml-run.sh", m_job.path()});
        uml.waitForFinished(-1);
        m_skipReason = uml.exitCode() == 77 ? QString::fromUtf8(uml.readAllStandardError()).trimmed() : QString();
        if (!m_skipReason.isEmpty())
            return {};
        if (uml.exitCode() != 0)
            qFatal("the guest failed: %s", uml.readAllStandardError().constData());
        Outcome outcome{.status = readFile(m_job.filePath("cli.status")).trimmed().toInt(),
                        .out = QString::fromUtf8(readFile(m_job.filePath("cli.out"))),
                        .err = QString::fromUtf8(readFile(m_job.filePath("cli.err"))),
                        .fsck = QString::fromUtf8(readFile(m_job.filePath("fsck.out"))),
                        .fsckStatus = readFile(m_job.filePath("fsck.status")).trimmed().toInt(),
                        .scenarioOut = QString::fromUtf8(readFile(m_job.filePath("scenario.out")))};
        for (const QByteArray &line : readFile(m_job.filePath("manifest.txt")).split('\n')) {
            const QList<QByteArray> fields = line.split(' ');
            if (fields.size() >= 3)
                outcome.files.insert(QString::fromUtf8(line.mid(fields[0].size() + fields[1].size() + 2)), fields[0]);
        }
        return outcome;
    }

    [[nodiscard]] const QString &skipReason() const { return m_skipReason; }

private:
    QTemporaryDir m_job;
    QByteArray m_database;
    QString m_skipReason;
};

#define RUN_OR_SKIP(device, ...)                                                                                  \
    (device).run(__VA_ARGS__);                                                                                     \
    if (!(device).skipReason().isEmpty())                                                                          \
        QSKIP(qPrintable((device).skipReason()));

// What the run reported is true: a playlist it calls written holds its whole new text on the device; any
// other holds either that or its old bytes, and the disk check cut nothing of either. The exit status
// says whether anything failed.
void verifyReportIsTrue(const Outcome &outcome, const Device &device, int playlists)
{
    const QMap<QString, QByteArray> fresh = device.newFiles();
    for (int n = 0; n < playlists; ++n) {
        const QString name = QStringLiteral("Playlist %1.m3u8").arg(n, 4, 10, QChar(u'0'));
        const QString path = "Playlists/" + name;
        const QByteArray found = outcome.files.value(path);
        const bool reportedWritten = outcome.out.contains("updated " + name) || outcome.out.contains("wrote   " + name);
        QVERIFY2(found == fresh.value(path) || (!reportedWritten && found == sha1(oldContent(n).toUtf8())),
                 qPrintable(path + ": " + found));
        QVERIFY2(!outcome.fsck.contains("/" + path), qPrintable(outcome.fsck));
    }
    if (outcome.status < 128) // a run stopped by a signal exits with 128 + its number
        QCOMPARE(outcome.status, outcome.out.contains("FAILED") ? 1 : 0);
}

} // namespace

class TestFat32 : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void deviceFaultsFailEveryPlaylistInWords_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("words");
        QTest::addRow("writes refused") << "refuse_writes" << "Input/output error";
        QTest::addRow("read-only volume") << "mount -o remount,ro \"$IPOD\"" << "The device is read-only";
        QTest::addRow("full volume") << "fill_volume 0" << "No space left on the device.";
    }

    void deviceFaultsFailEveryPlaylistInWords()
    {
        QFETCH(QString, fault);
        QFETCH(QString, words);
        Device device(Device::numbered(60), 60);
        const Outcome outcome = RUN_OR_SKIP(device, fault + "\nrun cli \"$CLI\" convert \"$IPOD\" --no-clean\n");
        QVERIFY2(outcome.out.count("FAILED") >= 59, qPrintable(outcome.out.right(300))); // a full volume had room for one
        QCOMPARE(outcome.out.count(words), outcome.out.count("FAILED"));
        verifyReportIsTrue(outcome, device, 60);
    }

    void interruptedRunLeavesOldOrNewFiles_data()
    {
        QTest::addColumn<QString>("scenario");
        QTest::addColumn<bool>("mustFail"); // false where the fault may come after the run's last flush
        const QString wait = "run cli \"$CLI\" convert \"$IPOD\" &\n";
        const QString renamed = "renamed() { local l2; { read -r; read -r l2; } <\"$IPOD/Playlists/Playlist 0300.m3u8\"; "
                                "[ \"$l2\" != \"# the old playlist 300\" ]; }\n";
        // The cable goes while the files are written, then while they are renamed into place.
        QTest::addRow("cable pulled while writing")
            << "warm_cache\narm pull_cable\n" + wait + "wait_until 60 at_least 200 \"$IPOD/Playlists/.kestrune-*\"\nfire\nwait\n" << true;
        QTest::addRow("cable pulled while renaming")
            << renamed + "eager_writeback\nwarm_cache\nslow_device 2\narm pull_cable\n" + wait + "wait_until 60 renamed\nfire\nwait\n"
            << false;
        // The file allocation table refuses writes while the data area takes them: the new files' clusters
        // reach the device, but not the table that says they are used.
        QTest::addRow("allocation table refused")
            << "data=$(fsck.vfat -n -v $DEV | sed -n 's/^Data area starts at byte [0-9]* (sector \\([0-9]*\\)).*/\\1/p')\n"
               "dm_table \"0 $data flakey $RAW 0 0 1 1 error_writes\" \"$data $((SECTORS - data)) linear $RAW $data\"\n"
               "run cli \"$CLI\" convert \"$IPOD\"\n" << true;
        // The volume is unmounted under the run: nothing may land on the bare mount point instead.
        QTest::addRow("unmounted while writing")
            << wait + "wait_until 60 at_least 200 \"$IPOD/Playlists/.kestrune-*\"\nlazy_unmount\nwait\n"
               "echo \"$(find $IPOD -type f | wc -l) files under the bare mount point\"\n" << true;
        QTest::addRow("unmounted while renaming")
            << renamed + wait + "wait_until 60 renamed\nlazy_unmount\nwait\n"
               "echo \"$(find $IPOD -type f | wc -l) files under the bare mount point\"\n" << false;
    }

    void interruptedRunLeavesOldOrNewFiles()
    {
        QFETCH(QString, scenario);
        QFETCH(bool, mustFail);
        Device device(Device::numbered(600), 600);
        const Outcome outcome = RUN_OR_SKIP(device, scenario);
        verifyReportIsTrue(outcome, device, 600);
        if (mustFail)
            QCOMPARE(outcome.status, 1);
        if (outcome.scenarioOut.contains("bare mount point"))
            QVERIFY2(outcome.scenarioOut.startsWith("0 files"), qPrintable(outcome.scenarioOut));
    }

    // A signal stops the run: what was not yet in place is abandoned, old files intact and no temporary file
    // left; renames already begun are finished. The next run sweeps up what a run killed outright left.
    void stoppedRunLeavesNothingBehind_data()
    {
        QTest::addColumn<QString>("scenario");
        QTest::addColumn<int>("status");
        const QString start = "run cli \"$CLI\" convert \"$IPOD\" &\n";
        const QString writing = start + "wait_until 60 at_least 200 \"$IPOD/Playlists/.kestrune-*\"\n";
        const QString renamed = "renamed() { local l2; { read -r; read -r l2; } <\"$IPOD/Playlists/Playlist 0300.m3u8\"; "
                                "[ \"$l2\" != \"# the old playlist 300\" ]; }\n";
        QTest::addRow("SIGINT while writing") << writing + "pkill -INT -x kestrune-cli\nwait\n" << 130;
        QTest::addRow("SIGTERM while renaming")
            << renamed + "slow_device 2\n" + start + "wait_until 60 renamed\npkill -TERM -x kestrune-cli\nwait\n" << 143;
        QTest::addRow("a clean started during the run waits its turn")
            << writing + "run clean \"$CLI\" clean \"$IPOD\"\nwait\necho \"clean $(<\"$JOB/clean.status\")\"\n" << 0;
        QTest::addRow("killed, then run again")
            << writing + "pkill -KILL -x kestrune-cli\nwait\nrun cli \"$CLI\" convert \"$IPOD\" --no-clean\n" << 0;
    }

    void stoppedRunLeavesNothingBehind()
    {
        QFETCH(QString, scenario);
        Device device(Device::numbered(600), 600);
        const Outcome outcome = RUN_OR_SKIP(device, scenario);
        QTEST(outcome.status, "status");
        const QStringList paths = outcome.files.keys();
        QVERIFY2(paths.filter(".kestrune-").isEmpty(), qPrintable(paths.filter(".kestrune-").join(u'\n')));
        verifyReportIsTrue(outcome, device, 600);
        if (outcome.status > 128)
            QVERIFY2(outcome.err.contains("stopped by SIG"), qPrintable(outcome.err));
        if (outcome.scenarioOut.startsWith("clean"))
            QCOMPARE(outcome.scenarioOut.trimmed(), "clean 0");
    }

    // A run where nothing changed writes nothing at all: no flush, no write, every timestamp as it was.
    void unchangedRunWritesNothing()
    {
        Device device(Device::numbered(200));
        QDir().mkpath(device.tree(".rockbox"));
        // The first run, then a fresh mount: nothing the second run finds is still in memory.
        const Outcome outcome = RUN_OR_SKIP(device,
            "run first \"$CLI\" convert \"$IPOD\"\ncd / && umount \"$IPOD\" && mount -t vfat -o \"$options\" $DEV \"$IPOD\"\n"
            "dm=dm-$(dmsetup info -c --noheadings -o minor ipod | tr -d ' ')\n"
            "io() { awk -v dm=$dm '$3 == dm { print \"writes\", $8, \"flushes\", $19 }' /proc/diskstats; }\n"
            "stat -c '%n %s %Y' \"$IPOD\"/Playlists/* \"$IPOD\"/.rockbox/* >\"$SCRATCH/before\"\nsync\nbefore=$(io)\n"
            "run cli \"$CLI\" convert \"$IPOD\" --mirror\n"
            "echo \"$before / $(io)\"\nstat -c '%n %s %Y' \"$IPOD\"/Playlists/* \"$IPOD\"/.rockbox/* | cmp - \"$SCRATCH/before\" && echo same\n");
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.out.count(" unchanged "), 200);
        const QStringList io = outcome.scenarioOut.section(u'\n', 0, 0).split(" / ");
        QVERIFY2(io.size() == 2 && io.first() == io.last() && io.first().startsWith("writes"), qPrintable(outcome.scenarioOut));
        QVERIFY2(outcome.scenarioOut.contains("\nsame"), qPrintable(outcome.scenarioOut));
    }

    // The cable pulled while mirror removes the files of deleted playlists: each is either still there,
    // whole, or gone; every other playlist is whole.
    void cutDuringMirrorRemovals()
    {
        QList<PlaylistItem> playlists = Device::numbered(600);
        Device device(playlists);
        QDir().mkpath(device.tree(".rockbox"));
        QCOMPARE(QProcess::execute("sh", {"-c", "exec \"$0\" convert \"$1\" >/dev/null", KESTRUNE_CLI_PATH, device.tree()}), 0);
        const QMap<QString, QByteArray> written = device.newFiles();
        ITunesDBWriter kept;
        for (quint32 id = 1; id <= 20; ++id)
            kept.addTrack(TrackItem::song(id, QStringLiteral("Song %1").arg(id), "Band",
                                          QStringLiteral(":iPod_Control:Music:F%1:S%2.mp3").arg(id % 50, 2, 10, QChar(u'0')).arg(id)));
        for (qsizetype n = 0; n < 300; ++n)
            kept.addPlaylist(playlists.at(n));
        writeFile(device.tree("../iTunesDB.after-sync"), kept.build());
        const Outcome outcome = RUN_OR_SKIP(device,
            "cp \"$JOB/iTunesDB.after-sync\" \"$IPOD/iPod_Control/iTunes/iTunesDB\" && sync\n"
            "fewer() { local -a m; shopt -s nullglob; m=(\"$IPOD\"/Playlists/*.m3u8); shopt -u nullglob; [ ${#m[@]} -le $1 ]; }\n"
            "eager_writeback\nwarm_cache\narm pull_cable\nrun cli \"$CLI\" convert \"$IPOD\" --mirror &\n"
            "wait_until 60 fewer 500\nfire\nwait\n");
        for (auto it = written.cbegin(); it != written.cend(); ++it) {
            const bool deleted = it.key() >= "Playlists/Playlist 0300";
            const QByteArray found = outcome.files.value(it.key());
            QVERIFY2(found == it.value() || (deleted && found.isEmpty()), qPrintable(it.key() + ": " + found));
            QVERIFY2(!outcome.fsck.contains("/" + it.key()), qPrintable(outcome.fsck));
        }
        QVERIFY2(outcome.out.contains("Playlist 0300.m3u8 (deleted in iTunes)"), qPrintable(outcome.out.right(300)));
    }

    // The cable pulled while covers are put in place: each cover is either absent or whole.
    void cutDuringCoverExport()
    {
        Device device({});
        ITunesDBWriter database;
        ArtworkWriter artwork;
        for (quint32 id = 1; id <= 300; ++id) {
            TrackItem track = TrackItem::song(id, QStringLiteral("Song %1").arg(id), "Band", QStringLiteral(":iPod_Control:Music:F00:S%1.mp3").arg(id));
            track.strings.append(StringObject::utf16(3, QStringLiteral("Album %1").arg(id)));
            track.dbId = id;
            database.addTrack(track);
            artwork.addImage(id, {{1028, 100, 100, ArtworkWriter::Picture::filled(100, 100, [id](int x, int y) { return quint16(x * y + id * 977); })}});
        }
        writeFile(device.tree("iPod_Control/iTunes/iTunesDB"), database.build());
        writeFile(device.tree("iPod_Control/Artwork/ArtworkDB"), artwork.database());
        writeFile(device.tree("iPod_Control/Artwork/F1028_1.ithmb"), artwork.thumbnailFiles().first());
        QDir().mkpath(device.tree(".rockbox"));
        // What each cover must hold: the same run on a copy of the tree, on the host.
        QTemporaryDir copy;
        QCOMPARE(QProcess::execute("cp", {"-r", device.tree("."), copy.filePath("ipod")}), 0);
        QCOMPARE(QProcess::execute("sh", {"-c", "exec \"$0\" art \"$1\" >/dev/null", KESTRUNE_CLI_PATH, copy.filePath("ipod")}), 0);
        const QMap<QString, QByteArray> covers = snapshotTree(copy.filePath("ipod/.rockbox/albumart"));
        QCOMPARE(covers.size(), 300);
        const Outcome outcome = RUN_OR_SKIP(device,
            "eager_writeback\nwarm_cache\narm pull_cable\nrun cli \"$CLI\" art \"$IPOD\" &\n"
            "wait_until 60 at_least 100 \"$IPOD/.rockbox/albumart/*.jpg\"\nfire\nwait\n");
        int whole = 0;
        for (auto it = covers.cbegin(); it != covers.cend(); ++it) {
            const QByteArray found = outcome.files.value(".rockbox/albumart/" + it.key());
            QVERIFY2(found.isEmpty() || found == it.value().toHex(), qPrintable(it.key() + ": " + found));
            whole += found.isEmpty() ? 0 : 1;
        }
        QVERIFY2(outcome.status == 1 || whole == 300, qPrintable(QString::number(whole) + outcome.out.right(300)));
        qInfo("%d of 300 covers on the device after the cut", whole);
    }

    void badSectorInTheDatabaseIsAReadError()
    {
        Device device(Device::numbered(3));
        const Outcome outcome =
            RUN_OR_SKIP(device, "bad_sectors iPod_Control/iTunes/iTunesDB\nrun cli \"$CLI\" convert \"$IPOD\"\n");
        QCOMPARE(outcome.status, 2);
        QCOMPARE(outcome.err.trimmed(), "kestrune-cli: Errore durante la lettura del database: Input/output error");
    }

    void awkwardNamesAreWrittenAndRockboxSpared()
    {
        const QStringList names{"tab\there", "one\x01", "del\x7f", "CON", "nul.txt", ".hidden", "...And Justice for All",
                                QString(300, u'x'), QString(200, QChar(0xE9)), "Caffè ☕", "Rock: Live?"};
        const QStringList expected{"tab_here", "one_", "del_", "CON_", "nul_.txt", "_hidden", "_..And Justice for All",
                                   QString(243, u'x'), QString(121, QChar(0xE9)), "Caffè ☕", "Rock_ Live_"};
        QList<PlaylistItem> playlists;
        for (const QString &name : names)
            playlists.append(PlaylistItem::of(name, {1, 2}));
        Device device(playlists);
        writeFile(device.tree(".Rockbox/config.cfg"), "volume: 10\n"); // Rockbox's own folder: FAT is case-blind
        writeFile(device.tree("Playlists/._junk.m3u8"), "junk");
        const Outcome outcome = RUN_OR_SKIP(device, "run cli \"$CLI\" convert \"$IPOD\"\n");
        QCOMPARE(outcome.status, 0);
        QVERIFY2(outcome.fsckStatus == 0, qPrintable(outcome.fsck)); // no name the check renames or refuses
        QVERIFY(outcome.files.contains(".Rockbox/config.cfg") && !outcome.files.contains("Playlists/._junk.m3u8"));
        for (const QString &name : expected)
            QVERIFY2(outcome.files.contains("Playlists/" + name + ".m3u8"), qPrintable(name + "\n" + outcome.files.keys().join(u'\n')));
    }

};

QTEST_GUILESS_MAIN(TestFat32)
#include "tst_fat32.moc"
