#include "core/FileSystemError.h"
#include "core/ITunesDBParser.h"
#include "core/ParseError.h"
#include "dbwriter/ByteWriter.h"
#include "dbwriter/ITunesDBWriter.h"

#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

using namespace kestrune;
using namespace kestrune::dbwriter;

Q_DECLARE_METATYPE(kestrune::dbwriter::StringObject)

namespace {

ParseResult parseBytes(const QByteArray &bytes)
{
    return ITunesDBParser().parse(bytes);
}

QByteArray trackSection(const QList<TrackItem> &tracks)
{
    QList<QByteArray> items;
    for (const TrackItem &track : tracks)
        items.append(mhit(track));
    return mhsd(1, mhlt(items));
}

QByteArray playlistSection(const QList<PlaylistItem> &playlists)
{
    QList<QByteArray> items;
    for (const PlaylistItem &playlist : playlists)
        items.append(mhyp(playlist));
    return mhsd(2, mhlp(items));
}

QList<quint32> idsOf(const QList<Track> &tracks)
{
    QList<quint32> ids;
    for (const Track &track : tracks)
        ids.append(track.id);
    return ids;
}

} // namespace

class TestITunesDBParser : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void minimalDatabase();
    void fatalErrors_data();
    void fatalErrors();
    void danglingAndRepeatedIds();
    void entryTrackIdFallback_data();
    void entryTrackIdFallback();
    void nameFallbacks();
    void smartMarkers_data();
    void smartMarkers();
    void stringObjects_data();
    void stringObjects();
    void laterDuplicateTrackWins();
    void junkBetweenSections_data();
    void junkBetweenSections();
    void junkBetweenTrackItemsCostsIterations_data();
    void junkBetweenTrackItemsCostsIterations();
    void zeroTotalLengthEndsTheWalk_data();
    void zeroTotalLengthEndsTheWalk();
    void shortHeadersGiveDefaults();
    void sectionCountAndOtherSectionTypes();
    void truncatedFileKeepsWhatWasRead_data();
    void truncatedFileKeepsWhatWasRead();
    void missingEntriesAfterShortStringList();
    void playlistIdsAreFreshPerParse();
    void parseFile();
};

void TestITunesDBParser::minimalDatabase()
{
    // Exactly the smallest layout: 32-byte header, 16-byte section headers, 12-byte list headers.
    TrackItem song{.id = 5001, .fileSize = 4500000, .totalTimeMs = 240000, .trackNumber = 3, .year = 1975,
                   .bitrate = 320, .headerLength = 72};
    song.strings = {StringObject::utf16(1, QStringLiteral("Bohemian Rhapsody")),
                    StringObject::utf16(2, QStringLiteral(":iPod_Control:Music:F00:ABCD.mp3")),
                    StringObject::utf16(4, QStringLiteral("Queen"))};
    const QString name = QStringLiteral("Caffè ¥ Ø € 🎵");
    PlaylistItem playlist{.name = name, .dbId = 12345, .headerLength = 36};
    playlist.entries = {PlaylistEntry{.trackId = 5001, .headerLength = 28, .withPositionObject = false}};

    const QByteArray db = mhbd({mhsd(1, mhlt({mhit(song)}, 12), 16), mhsd(2, mhlp({mhyp(playlist)}, 12), 16)}, 32);
    const ParseResult result = parseBytes(db);

    QCOMPARE(result.tracks.size(), 1);
    const Track track = result.tracks.value(5001);
    QCOMPARE(track.title, QStringLiteral("Bohemian Rhapsody"));
    QCOMPARE(track.artist, QStringLiteral("Queen"));
    QCOMPARE(track.ipodPath, QStringLiteral(":iPod_Control:Music:F00:ABCD.mp3"));
    QCOMPARE(track.fileSize, 4500000u);
    QCOMPARE(track.totalTimeMs, 240000u);
    QCOMPARE(track.trackNumber, 3u);
    QCOMPARE(track.year, 1975u);
    QCOMPARE(track.bitrate, 320u);
    QCOMPARE(result.playlists.size(), 1);
    const Playlist &parsed = result.playlists.first();
    QCOMPARE(parsed.dbId, 12345u);
    QCOMPARE(parsed.name, name);
    QVERIFY(!parsed.isMaster);
    QVERIFY(!parsed.isSmart);
    QCOMPARE(parsed.trackIds, QList<quint32>{5001});
    QCOMPARE(parsed.tracks, QList<Track>{track});
    QVERIFY(!parsed.existingRockboxFile);
}

void TestITunesDBParser::fatalErrors_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("kind");
    QTest::addRow("31 bytes") << mhbd({}, 32).left(31) << int(ParseError::Kind::fileTooSmall);
    QTest::addRow("empty") << QByteArray() << int(ParseError::Kind::fileTooSmall);
    QTest::addRow("32 bytes, wrong tag") << QByteArray(32, 'x') << int(ParseError::Kind::invalidHeader);
    QTest::addRow("tag not ASCII") << QByteArray("\xedhbd").append(28, '\0') << int(ParseError::Kind::invalidHeader);
    QTest::addRow("section list, not header") << mhsd(1, QByteArray(32, '\0')) << int(ParseError::Kind::invalidHeader);
}

void TestITunesDBParser::fatalErrors()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, kind);
    try {
        (void)parseBytes(bytes);
        QFAIL("expected a ParseError");
    } catch (const ParseError &error) {
        QCOMPARE(int(error.kind()), kind);
    }
}

void TestITunesDBParser::danglingAndRepeatedIds()
{
    const QByteArray db = ITunesDBWriter()
                              .addTrack(TrackItem::song(5001, QStringLiteral("Only"), {}, {}))
                              .addPlaylist(PlaylistItem::of(QStringLiteral("Mix"), {7, 5001, 7, 5001}))
                              .build();
    const Playlist playlist = parseBytes(db).playlists.value(0);
    QCOMPARE(playlist.trackIds, (QList<quint32>{7, 5001, 7, 5001}));
    QCOMPARE(idsOf(playlist.tracks), (QList<quint32>{5001, 5001}));
    QCOMPARE(playlist.trackCount(), 2);
}

void TestITunesDBParser::entryTrackIdFallback_data()
{
    QTest::addColumn<quint32>("headerLength");
    QTest::addColumn<quint32>("idOffset");
    QTest::addColumn<QList<quint32>>("expected");
    QTest::addRow("at +24") << 0x4Cu << 24u << QList<quint32>{5001};
    QTest::addRow("at +20 when +24 is zero") << 0x4Cu << 20u << QList<quint32>{5001};
    QTest::addRow("at +16 when +24 and +20 are zero") << 0x4Cu << 16u << QList<quint32>{5001};
    QTest::addRow("+20 read with a 24-byte header") << 24u << 20u << QList<quint32>{5001};
    QTest::addRow("+16 read with a short header") << 20u << 16u << QList<quint32>{5001};
}

void TestITunesDBParser::entryTrackIdFallback()
{
    QFETCH(quint32, headerLength);
    QFETCH(quint32, idOffset);
    QFETCH(QList<quint32>, expected);
    PlaylistItem playlist{.name = QStringLiteral("P")};
    playlist.entries = {PlaylistEntry{.trackId = 5001, .headerLength = headerLength, .idOffset = idOffset,
                                      .withPositionObject = false},
                        PlaylistEntry{.trackId = 0, .withPositionObject = false}}; // contributes nothing
    const QByteArray db = mhbd({trackSection({}), playlistSection({playlist})});
    QCOMPARE(parseBytes(db).playlists.value(0).trackIds, expected);
}

void TestITunesDBParser::nameFallbacks()
{
    PlaylistItem master{.isMaster = true};
    PlaylistItem named = PlaylistItem::of(QStringLiteral("Named"), {});
    PlaylistItem nameless{};
    PlaylistItem blankName = PlaylistItem::of(QStringLiteral(" \t"), {});
    const QByteArray db = mhbd({trackSection({}), playlistSection({master, named, nameless, blankName})});
    const QList<Playlist> playlists = parseBytes(db).playlists;
    QCOMPARE(playlists.size(), 4);
    QCOMPARE(playlists[0].name, QStringLiteral("iPod Library"));
    QVERIFY(playlists[0].isMaster);
    QCOMPARE(playlists[1].name, QStringLiteral("Named"));
    QCOMPARE(playlists[2].name, QStringLiteral("Playlist 3"));
    QCOMPARE(playlists[3].name, QStringLiteral("Playlist 4"));
}

void TestITunesDBParser::smartMarkers_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<bool>("smart");
    for (quint32 type : {50u, 51u, 100u, 101u})
        QTest::addRow("type %u", type) << type << true;
    for (quint32 type : {2u, 49u, 52u, 99u, 102u})
        QTest::addRow("type %u", type) << type << false;
}

void TestITunesDBParser::smartMarkers()
{
    QFETCH(quint32, type);
    QFETCH(bool, smart);
    PlaylistItem playlist = PlaylistItem::of(QStringLiteral("P"), {1});
    playlist.extraObjects = {StringObject::opaque(type)};
    const QByteArray db = mhbd({trackSection({TrackItem::song(1, QStringLiteral("t"), {}, {})}),
                                playlistSection({playlist})});
    const Playlist parsed = parseBytes(db).playlists.value(0);
    QCOMPARE(parsed.isSmart, smart);
    QCOMPARE(parsed.name, QStringLiteral("P"));
    QCOMPARE(parsed.trackIds, QList<quint32>{1});
}

void TestITunesDBParser::stringObjects_data()
{
    QTest::addColumn<StringObject>("object");
    QTest::addColumn<QString>("expected");

    StringObject utf8All = StringObject::utf8(1, QStringLiteral("Caffè"));
    utf8All.storedLength = 0;
    QTest::addRow("utf8 with length 0 takes all bytes") << utf8All << "Caffè";

    StringObject tooLong = StringObject::utf16(1, QStringLiteral("Long"));
    tooLong.storedLength = 1000;
    QTest::addRow("stored length beyond object takes all bytes") << tooLong << "Long";

    StringObject shorter = StringObject::utf16(1, QStringLiteral("Long"));
    shorter.storedLength = 4;
    QTest::addRow("stored length honoured") << shorter << "Lo";

    StringObject bom{.type = 1, .text = QByteArray("\xff\xfeT\0i\0t\0l\0e\0\0\0\0\0", 14)};
    QTest::addRow("BOM and NULs trimmed") << bom << "Title";

    QTest::addRow("bare BOM trims to empty")
        << StringObject{.type = 1, .text = QByteArray("\xff\xfe", 2)} << "";

    QTest::addRow("latin bytes flagged utf8 fall to mac roman")
        << StringObject{.type = 1, .text = QByteArray("Caf\x8e"), .encodingFlag = 2} << "Café";

    QTest::addRow("raw form utf16")
        << StringObject{.type = 1, .text = QByteArray("R\0a\0w\0", 6), .rawForm = true} << "Raw";

    StringObject empty = StringObject::utf16(1, QString());
    QTest::addRow("no text bytes") << empty << "";

    StringObject headerOnly = StringObject::utf16(1, QStringLiteral("x"));
    headerOnly.totalLength = 24;
    QTest::addRow("header length equals total length") << headerOnly << "";
}

void TestITunesDBParser::stringObjects()
{
    QFETCH(StringObject, object);
    QFETCH(QString, expected);
    TrackItem track{.id = 9, .strings = {object, StringObject::utf16(4, QStringLiteral("After"))}};
    const QByteArray db = mhbd({trackSection({track})});
    const Track parsed = parseBytes(db).tracks.value(9);
    QCOMPARE(parsed.title, expected);
    if (!object.totalLength)
        QCOMPARE(parsed.artist, QStringLiteral("After")); // the walk went on past the object
}

void TestITunesDBParser::laterDuplicateTrackWins()
{
    const QByteArray db = ITunesDBWriter()
                              .addTrack(TrackItem::song(1, QStringLiteral("First"), {}, {}))
                              .addTrack(TrackItem::song(2, QStringLiteral("Other"), {}, {}))
                              .addTrack(TrackItem::song(1, QStringLiteral("Second"), {}, {}))
                              .addPlaylist(PlaylistItem::of(QStringLiteral("P"), {1}))
                              .build();
    const ParseResult result = parseBytes(db);
    QCOMPARE(result.tracks.size(), 2);
    QCOMPARE(result.tracks.value(1).title, QStringLiteral("Second"));
    QCOMPARE(result.trackOrder, (QList<quint32>{1, 2}));
    QCOMPARE(result.playlists.value(0).tracks.value(0).title, QStringLiteral("Second"));
}

void TestITunesDBParser::junkBetweenSections_data()
{
    QTest::addColumn<int>("junkBytes");
    QTest::addColumn<int>("playlists");
    QTest::addRow("8 junk bytes are stepped over") << 8 << 1;
    QTest::addRow("4 junk bytes are stepped over") << 4 << 1;
    QTest::addRow("6 junk bytes misalign the 4-byte steps") << 6 << 0;
}

void TestITunesDBParser::junkBetweenSections()
{
    QFETCH(int, junkBytes);
    QFETCH(int, playlists);
    const QByteArray tracks = trackSection({TrackItem::song(1, QStringLiteral("t"), {}, {})});
    const QByteArray lists = playlistSection({PlaylistItem::of(QStringLiteral("P"), {1})});
    const QByteArray db = mhbd({tracks, QByteArray(junkBytes, 'J'), lists}, 0x68, 2);
    const ParseResult result = parseBytes(db);
    QCOMPARE(result.tracks.size(), 1);
    QCOMPARE(result.playlists.size(), playlists);
}

void TestITunesDBParser::junkBetweenTrackItemsCostsIterations_data()
{
    QTest::addColumn<quint32>("count");
    QTest::addColumn<QList<quint32>>("expected");
    QTest::addRow("count of the items only") << 2u << QList<quint32>{1};
    QTest::addRow("count covering the three junk steps") << 5u << QList<quint32>{1, 2};
}

void TestITunesDBParser::junkBetweenTrackItemsCostsIterations()
{
    QFETCH(quint32, count);
    QFETCH(QList<quint32>, expected);
    const QByteArray items = mhit(TrackItem::song(1, QStringLiteral("a"), {}, {})) + QByteArray("JJJ") +
                             mhit(TrackItem::song(2, QStringLiteral("b"), {}, {}));
    const QByteArray db = mhbd({mhsd(1, mhlt({items}, 0x5C, count))});
    QCOMPARE(parseBytes(db).trackOrder, expected);
}

void TestITunesDBParser::zeroTotalLengthEndsTheWalk_data()
{
    QTest::addColumn<QByteArray>("db");
    QTest::addColumn<int>("tracks");
    QTest::addColumn<int>("entries");

    const TrackItem one = TrackItem::song(1, QStringLiteral("a"), {}, {});
    const TrackItem two = TrackItem::song(2, QStringLiteral("b"), {}, {});
    const PlaylistItem playlist = PlaylistItem::of(QStringLiteral("P"), {1, 2});

    // A section that claims no length ends where it starts, so it holds no items and ends the walk.
    QTest::addRow("section")
        << mhbd({mhsd(1, mhlt({mhit(one), mhit(two)}), 0x60, 0), playlistSection({playlist})}, 0x68, 1000000)
        << 0 << -1;

    TrackItem zeroItem = one;
    zeroItem.totalLength = 0;
    QTest::addRow("track item") << mhbd({trackSection({zeroItem, two}), playlistSection({playlist})}) << 1 << 2;

    TrackItem zeroString = one;
    zeroString.strings.first().totalLength = 0;
    zeroString.stringCount = 1000000;
    QTest::addRow("string object") << mhbd({trackSection({zeroString, two}), playlistSection({playlist})}) << 2
                                   << 2;

    PlaylistItem zeroEntry = playlist;
    zeroEntry.entries.first().totalLength = 0;
    zeroEntry.entryCount = 1000000;
    QTest::addRow("playlist entry") << mhbd({trackSection({one, two}), playlistSection({zeroEntry})}) << 2 << 1;

    PlaylistItem zeroPlaylist = playlist;
    zeroPlaylist.totalLength = 0;
    QByteArray lists = mhsd(2, mhlp({mhyp(zeroPlaylist), mhyp(playlist)}, 0x5C, 1000000));
    // Its objects lie past its end, so no name is read and the entry walk meets the title object.
    QTest::addRow("playlist item") << mhbd({trackSection({one, two}), lists}) << 2 << 0;
}

void TestITunesDBParser::zeroTotalLengthEndsTheWalk()
{
    QFETCH(QByteArray, db);
    QFETCH(int, tracks);
    QFETCH(int, entries);
    ParseWork work;
    const ParseResult result = ITunesDBParser().parse(db, &work);
    QCOMPARE(result.tracks.size(), tracks);
    if (entries >= 0) {
        QCOMPARE(result.playlists.size(), 1);
        QCOMPARE(result.playlists.first().trackIds.size(), entries);
    }
    QVERIFY2(work.iterations < 100, "the walk must not re-read the same chunk");
}

void TestITunesDBParser::shortHeadersGiveDefaults()
{
    TrackItem shortTrack = TrackItem::song(3, QStringLiteral("Short"), {}, {});
    shortTrack.headerLength = 56; // too short for size, length and the rest
    shortTrack.year = 1999;
    PlaylistItem noMasterWord = PlaylistItem::of(QStringLiteral("A"), {});
    noMasterWord.isMaster = true;
    noMasterWord.headerLength = 20;
    noMasterWord.dbId = 99;
    PlaylistItem noDbId = PlaylistItem::of(QStringLiteral("B"), {});
    noDbId.isMaster = true;
    noDbId.headerLength = 32;
    noDbId.dbId = 99;

    const ParseResult result = parseBytes(mhbd({trackSection({shortTrack}), playlistSection({noMasterWord, noDbId})}));
    const Track track = result.tracks.value(3);
    QCOMPARE(track.title, QStringLiteral("Short"));
    QCOMPARE(track.year, 0u);
    QCOMPARE(track.totalTimeMs, 0u);
    QCOMPARE(result.playlists.size(), 2);
    QVERIFY(!result.playlists[0].isMaster);
    QCOMPARE(result.playlists[0].dbId, 0u);
    QVERIFY(result.playlists[1].isMaster);
    QCOMPARE(result.playlists[1].dbId, 0u);
}

void TestITunesDBParser::sectionCountAndOtherSectionTypes()
{
    const QByteArray tracks = trackSection({TrackItem::song(1, QStringLiteral("t"), {}, {})});
    const QByteArray lists = playlistSection({PlaylistItem::of(QStringLiteral("P"), {1})});
    const QByteArray podcasts = mhsd(3, mhlp({mhyp(PlaylistItem::of(QStringLiteral("Podcasts"), {1}))}));

    QCOMPARE(parseBytes(mhbd({tracks, lists}, 0x68, 1)).playlists.size(), 0);
    const ParseResult withPodcasts = parseBytes(mhbd({tracks, podcasts, lists}));
    QCOMPARE(withPodcasts.playlists.size(), 1);
    QCOMPARE(withPodcasts.playlists.first().name, QStringLiteral("P"));
}

void TestITunesDBParser::truncatedFileKeepsWhatWasRead_data()
{
    QTest::addColumn<int>("bytesOfSecondItem");
    QTest::addColumn<QList<quint32>>("expected");
    QTest::addRow("cut inside the item's first 20 bytes drops it") << 10 << QList<quint32>{1};
    QTest::addRow("cut after its header words keeps it, without strings") << 30 << QList<quint32>{1, 2};
}

void TestITunesDBParser::truncatedFileKeepsWhatWasRead()
{
    QFETCH(int, bytesOfSecondItem);
    QFETCH(QList<quint32>, expected);
    const QByteArray full = ITunesDBWriter()
                                .addTrack(TrackItem::song(1, QStringLiteral("Kept"), {}, {}))
                                .addTrack(TrackItem::song(2, QStringLiteral("Cut"), {}, {}))
                                .addPlaylist(PlaylistItem::of(QStringLiteral("P"), {1, 2}))
                                .build();
    const qsizetype cut = full.indexOf("mhit", full.indexOf("mhit") + 4) + bytesOfSecondItem;
    const ParseResult result = parseBytes(full.left(cut));
    QCOMPARE(result.trackOrder, expected);
    QCOMPARE(result.tracks.value(1).title, QStringLiteral("Kept"));
    QCOMPARE(result.tracks.value(2).title, QString());
    QVERIFY(result.playlists.isEmpty());
}

void TestITunesDBParser::missingEntriesAfterShortStringList()
{
    // The item claims three objects but holds one: its entries still follow.
    PlaylistItem playlist = PlaylistItem::of(QStringLiteral("P"), {1});
    playlist.stringCount = 3;
    const QByteArray db = mhbd({trackSection({TrackItem::song(1, QStringLiteral("t"), {}, {})}),
                                playlistSection({playlist})});
    QCOMPARE(parseBytes(db).playlists.value(0).trackIds, QList<quint32>{1});
}

void TestITunesDBParser::playlistIdsAreFreshPerParse()
{
    const QByteArray db = ITunesDBWriter()
                              .addPlaylist(PlaylistItem::of(QStringLiteral("A"), {}))
                              .addPlaylist(PlaylistItem::of(QStringLiteral("B"), {}))
                              .build();
    const ParseResult first = parseBytes(db);
    const ParseResult second = parseBytes(db);
    QVERIFY(first.playlists[0].id != first.playlists[1].id);
    QVERIFY(first.playlists[0].id != second.playlists[0].id);
    QVERIFY(!QUuid::fromString(first.playlists[0].id).isNull());
}

void TestITunesDBParser::parseFile()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("iTunesDB"));
    try {
        (void)ITunesDBParser().parse(QUrl::fromLocalFile(path));
        QFAIL("expected a FileSystemError");
    } catch (const FileSystemError &error) {
        QCOMPARE(error.path, path);
        QVERIFY(error.errorDescription.contains(QStringLiteral("iTunesDB")));
    }

    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(ITunesDBWriter().addPlaylist(PlaylistItem::of(QStringLiteral("From disk"), {})).build());
    file.close();
    QCOMPARE(ITunesDBParser().parse(QUrl::fromLocalFile(path)).playlists.value(0).name,
             QStringLiteral("From disk"));

    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.close();
    QVERIFY_THROWS_EXCEPTION(ParseError, (void)ITunesDBParser().parse(QUrl::fromLocalFile(path)));
}

QTEST_APPLESS_MAIN(TestITunesDBParser)
#include "tst_itunesdbparser.moc"
