#include "core/ITunesDBParser.h"
#include "core/PlayCounts.h"
#include "dbwriter/ITunesDBWriter.h"
#include "export/StatisticsChangelog.h"
#include "support/TestFiles.h"

#include <QSet>
#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;
using namespace kestrune::dbwriter;
using namespace kestrune::testing;

namespace {

using Tags = QMap<QString, QString>;

// Reads a changelog as the player does: lines that start with '#' are skipped, tag names are matched
// case-blind, a value runs to the next unescaped quote, and a backslash escapes the character after it
// ("\n" being a line break). A line it cannot read gives an empty map.
QList<Tags> readChangelog(const QByteArray &text)
{
    QList<Tags> lines;
    for (const QByteArray &line : text.split('\n')) {
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        Tags tags;
        for (qsizetype at = 0; at < line.size();) {
            const qsizetype equals = line.indexOf("=\"", at);
            if (equals < 0)
                return {Tags{}};
            QByteArray value;
            qsizetype i = equals + 2;
            for (; i < line.size() && line.at(i) != '"'; ++i) {
                if (line.at(i) == '\\' && ++i < line.size())
                    value += line.at(i) == 'n' ? '\n' : line.at(i);
                else
                    value += line.at(i);
            }
            tags.insert(QString::fromUtf8(line.mid(at, equals - at)).toLower(), QString::fromUtf8(value));
            at = i + 2; // the closing quote and the space after it
        }
        lines.append(tags);
    }
    return lines;
}

TrackItem played(quint32 id, const QString &title, const QString &path, quint32 plays, quint32 lastPlayed)
{
    TrackItem track = TrackItem::song(id, title, QStringLiteral("Band"), path, 200000);
    track.playCount = plays;
    track.lastPlayed = lastPlayed;
    return track;
}

} // namespace

class TestStatistics : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void changelogCarriesEveryValueOfTheDevice()
    {
        QTemporaryDir device;
        const QString deep = QStringLiteral("/%1").arg(QString(200, u'd')).repeated(11); // 2,211 bytes
        TrackItem quoted = played(1, "Say \"Hi\" \\ Bye", ":iPod_Control:Music:F00:ABCD.mp3", 10, 5000);
        quoted.strings.append(StringObject::utf16(4, "Line\nBreak")); // a second artist object replaces "Band"
        quoted.strings.append(StringObject::utf16(3, "Album"));
        quoted.rating = 80;
        quoted.year = 1999;
        quoted.trackNumber = 3;
        quoted.bitrate = 256;
        TrackItem rated = played(4, "Rated", ":iPod_Control:Music:F00:R.mp3", 0, 0);
        rated.rating = 20;
        TrackItem wordy = played(6, QString(1900, u't'), ":iPod_Control:Music:F00:W.mp3", 1, 4000);
        wordy.strings.append(StringObject::utf16(4, QString(300, u'a')));
        const QByteArray database = ITunesDBWriter()
                                        .addTrack(quoted)
                                        .addTrack(played(2, "Never played", ":iPod_Control:Music:F00:N.mp3", 0, 0))
                                        .addTrack(played(3, "Missing", ":iPod_Control:Music:F00:GONE.mp3", 1, 3000))
                                        .addTrack(rated)
                                        .addTrack(played(5, "Deep", ":iPod_Control:Music" + QString(deep).replace(u'/', u':') + ":x.mp3", 1, 1))
                                        .addTrack(wordy)
                                        .build();
        // The device spells two names in another case; a play since the last sync comes on top of track 1's.
        for (const char *file : {"iPod_Control/Music/F00/abcd.MP3", "iPod_Control/Music/F00/r.MP3",
                                 "iPod_Control/Music/F00/N.mp3", "iPod_Control/Music/F00/W.mp3"})
            writeFile(device.filePath(QLatin1StringView(file)), "music");
        writeFile(device.path() + "/iPod_Control/Music" + deep + "/x.mp3", "music");
        writeFile(device.filePath("Play Counts"), playCountsFile({{.plays = 2, .lastPlayed = 6000, .rating = 80}}, 16));
        const LibraryStatistics statistics = libraryStatistics(ITunesDBParser().parse(database), device.path());

        DeviceFileIndex files(device.path());
        const StatisticsChangelog changelog = buildStatisticsChangelog(statistics.tracks, files);
        QCOMPARE(changelog.written, 3);
        QCOMPARE(changelog.notOnDevice, 1);
        QCOMPARE(changelog.tooLong, 1);
        QVERIFY(changelog.text.startsWith("## Changelog version 1\n"));
        for (const QByteArray &line : changelog.text.split('\n'))
            QVERIFY(line.size() <= 2047);
        const QList<Tags> lines = readChangelog(changelog.text);
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines.at(0), (Tags{{"artist", "Line\nBreak"}, {"album", "Album"}, {"title", "Say \"Hi\" \\ Bye"},
                                    {"filename", "/iPod_Control/Music/F00/abcd.MP3"}, {"year", "1999"},
                                    {"tracknumber", "3"}, {"bitrate", "256"}, {"length", "200000"},
                                    {"playcount", "12"}, {"rating", "8"}, {"playtime", "2400000"},
                                    {"lastplayed", "2"}}));
        QCOMPARE(lines.at(1).value("filename"), "/iPod_Control/Music/F00/r.MP3");
        QCOMPARE(lines.at(1).value("rating"), "2");
        QCOMPARE(lines.at(1).value("lastplayed"), "0"); // never played: no place in the order
        // The longest informative tag goes first, and only as many as the line needs.
        QCOMPARE(lines.at(2).value("artist"), QString(300, u'a'));
        QVERIFY(!lines.at(2).contains("title"));
        QCOMPARE(lines.at(2).value("lastplayed"), "1");
    }

    void demoIPodReadsBack()
    {
        const QString demo = QStringLiteral(KESTRUNE_TEST_DATA_DIR "/../../examples/demo-ipod");
        const LibraryStatistics statistics =
            libraryStatistics(ITunesDBParser().parse(QUrl::fromLocalFile(demo + "/iPod_Control/iTunes/iTunesDB")),
                              demo + "/iPod_Control/iTunes");
        DeviceFileIndex files(demo);
        const QList<Tags> lines = readChangelog(buildStatisticsChangelog(statistics.tracks, files).text);
        QCOMPARE(lines.size(), 10); // of 11 tracks with statistics, one has no file on the demo iPod
        QSet<QString> order;
        qint64 plays = 0;
        for (const Tags &line : lines) {
            QVERIFY2(QFileInfo::exists(demo + line.value("filename")), qPrintable(line.value("filename")));
            plays += line.value("playcount").toLongLong();
            order.insert(line.value("lastplayed"));
        }
        QCOMPARE(plays, 267);       // all 270 but the 3 of the track without a file
        QCOMPARE(order.size(), 10); // each its own place in the order of last plays
    }

    void writingKeepsWhatIsThere()
    {
        QTemporaryDir device;
        QCOMPARE(writeStatisticsChangelog(device.path(), "new", false),
                 std::optional<QString>("the device has no .rockbox folder: install Rockbox on it first"));
        QCOMPARE(QDir(device.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList{});

        const QString existing = device.filePath(".Rockbox/database_changelog.txt"); // FAT is case-blind
        writeFile(existing, "written by Rockbox");
        QVERIFY(writeStatisticsChangelog(device.path(), "new", false).value_or("").contains("already exists"));
        QCOMPARE(readFile(existing), QByteArray("written by Rockbox"));
        QCOMPARE(writeStatisticsChangelog(device.path(), "new", true), std::nullopt);
        QCOMPARE(readFile(existing), QByteArray("new"));
    }
};

QTEST_APPLESS_MAIN(TestStatistics)
#include "tst_statistics.moc"
