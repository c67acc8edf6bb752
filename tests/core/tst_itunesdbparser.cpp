#include "core/FileSystemError.h"
#include "core/ITunesDBParser.h"
#include "core/ParseError.h"
#include "dbwriter/ITunesDBWriter.h"
#include "support/TestFiles.h"

#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace kestrune;
using namespace kestrune::dbwriter;
using namespace kestrune::testing;

Q_DECLARE_METATYPE(kestrune::dbwriter::StringObject)
Q_DECLARE_METATYPE(kestrune::dbwriter::PlaylistItem)

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

QByteArray littleEndian32(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

// 8,000 track items of about 700 bytes, ids from 1, each with its path and a title of 300 characters or,
// when asked, a title full of chains of what look like track items.
QList<QByteArray> largeTrackList(bool fakeItemsInTitles)
{
    QByteArray fakeItems; // items whose lengths lead from one to the next, again and again
    for (int i = 0; i < 24; ++i)
        fakeItems += "mhit" + littleEndian32(20) + littleEndian32(24) + QByteArray(12, '\x07');
    QList<QByteArray> items;
    for (quint32 id = 1; id <= 8000; ++id) {
        TrackItem track = TrackItem::song(id, {}, {}, QString(":iPod_Control:Music:F00:%1.mp3").arg(id));
        track.strings.prepend(fakeItemsInTitles ? StringObject{.type = 1, .text = fakeItems}
                                                : StringObject::utf16(1, QString("Song %1").arg(id).leftJustified(300, u'.')));
        items.append(mhit(track));
    }
    return items;
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
        ids.append(track.id());
    return ids;
}

const TrackItem one = TrackItem::song(1, "a", {}, {});
const TrackItem two = TrackItem::song(2, "b", {}, {});

} // namespace

class TestITunesDBParser : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void minimalDatabase()
    {
        // Exactly the smallest layout: 32-byte header, 16-byte section headers, 12-byte list headers.
        TrackItem song{.id = 5001, .fileSize = 4500000, .totalTimeMs = 240000, .trackNumber = 3, .year = 1975,
                       .bitrate = 320, .headerLength = 72};
        song.strings = {StringObject::utf16(1, "Bohemian Rhapsody"), StringObject::utf16(2, ":iPod_Control:Music:F00:ABCD.mp3"),
                        StringObject::utf16(4, "Queen")};
        PlaylistItem playlist{.name = QStringLiteral("Caffè ¥ Ø € 🎵"), .dbId = 12345, .headerLength = 36};
        playlist.entries = {PlaylistEntry{.trackId = 5001, .headerLength = 28, .withPositionObject = false}};
        const ParseResult result =
            parseBytes(mhbd({mhsd(1, mhlt({mhit(song)}, 12), 16), mhsd(2, mhlp({mhyp(playlist)}, 12), 16)}, 32));

        const Track expected({.id = 5001, .title = "Bohemian Rhapsody", .artist = "Queen",
                             .ipodPath = ":iPod_Control:Music:F00:ABCD.mp3", .fileSize = 4500000, .totalTimeMs = 240000,
                             .trackNumber = 3, .year = 1975, .bitrate = 320});
        QCOMPARE(result.tracks, (QHash<quint32, Track>{{5001, expected}}));
        QCOMPARE(result.playlists.size(), 1);
        Playlist parsed = result.playlists.first();
        QVERIFY(!parsed.id.isEmpty());
        parsed.id.clear();
        QCOMPARE(parsed, (Playlist{.dbId = 12345, .name = *playlist.name, .trackIds = {5001}, .tracks = {expected}}));
        QVERIFY(!result.looksTruncated);
    }

    // What links a track to its cover: its persistent id, and the artwork link only headers long enough
    // to hold it carry; and the album artist Rockbox names covers by.
    void identityAndAlbumArtist_data()
    {
        QTest::addColumn<quint32>("headerLength");
        QTest::addColumn<quint64>("dbId");
        QTest::addColumn<quint32>("artworkId");
        QTest::addRow("iTunes 7.4 header") << 0x248u << 0xD3E0000000000065ull << 104u;
        QTest::addRow("too short for the link") << 0x183u << 0xD3E0000000000065ull << 0u;
        QTest::addRow("too short for the id") << 112u << 0ull << 0u;
    }
    void identityAndAlbumArtist()
    {
        QFETCH(quint32, headerLength);
        QFETCH(quint64, dbId);
        QFETCH(quint32, artworkId);
        TrackItem song = TrackItem::song(7, "Song", "Guest", ":a.mp3");
        song.headerLength = headerLength;
        song.dbId = 0xD3E0000000000065ull;
        song.artworkId = 104;
        song.strings.append(StringObject::utf16(22, "Band"));
        const Track track = parseBytes(ITunesDBWriter().addTrack(song).build()).tracks.value(7);
        QCOMPARE(track.dbId(), dbId);
        QCOMPARE(track.artworkId(), artworkId);
        QCOMPARE(track.albumArtist(), "Band");
    }

    void fatalErrors_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("kind");
        QTest::addRow("31 bytes") << mhbd({}, 32).left(31) << int(ParseError::Kind::fileTooSmall);
        QTest::addRow("empty") << QByteArray() << int(ParseError::Kind::fileTooSmall);
        QTest::addRow("32 bytes, wrong tag") << QByteArray(32, 'x') << int(ParseError::Kind::invalidHeader);
        QTest::addRow("tag not ASCII") << QByteArray("\xedhbd").append(28, '\0') << int(ParseError::Kind::invalidHeader);
        QTest::addRow("section first") << mhsd(1, QByteArray(32, '\0')) << int(ParseError::Kind::invalidHeader);
    }

    void fatalErrors()
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

    void resolution()
    {
        // Dangling ids are skipped, repeated ones repeat, and a later track with the same id wins.
        const QByteArray db = ITunesDBWriter()
                                  .addTrack(TrackItem::song(5001, "First", {}, {}))
                                  .addTrack(TrackItem::song(2, "Other", {}, {}))
                                  .addTrack(TrackItem::song(5001, "Second", {}, {}))
                                  .addPlaylist(PlaylistItem::of("Mix", {7, 5001, 7, 5001}))
                                  .build();
        const ParseResult result = parseBytes(db);
        const Playlist playlist = result.playlists.value(0);
        QCOMPARE(playlist.trackIds, (QList<quint32>{7, 5001, 7, 5001}));
        QCOMPARE(idsOf(playlist.tracks), (QList<quint32>{5001, 5001}));
        QCOMPARE(playlist.tracks.value(0).title(), "Second");
        QCOMPARE(result.trackOrder, (QList<quint32>{5001, 2}));
        QCOMPARE(result.trackItemIds, (QList<quint32>{5001, 2, 5001}));
        QVERIFY(result.playlists.value(0).id != parseBytes(db).playlists.value(0).id); // fresh on every parse
    }

    void entryTrackIdFallback_data()
    {
        QTest::addColumn<quint32>("headerLength");
        QTest::addColumn<quint32>("idOffset");
        QTest::addRow("at +24") << 0x4Cu << 24u;
        QTest::addRow("at +16 when +24 and +20 are zero") << 0x4Cu << 16u;
        QTest::addRow("+20 read with a 24-byte header") << 24u << 20u;
    }

    void entryTrackIdFallback()
    {
        QFETCH(quint32, headerLength);
        QFETCH(quint32, idOffset);
        PlaylistItem playlist{.name = QStringLiteral("P")};
        playlist.entries = {PlaylistEntry{.trackId = 5001, .headerLength = headerLength, .idOffset = idOffset,
                                          .withPositionObject = false},
                            PlaylistEntry{.trackId = 0, .withPositionObject = false}}; // contributes nothing
        QCOMPARE(parseBytes(mhbd({trackSection({}), playlistSection({playlist})})).playlists.value(0).trackIds,
                 QList<quint32>{5001});
    }

    void playlistHeader_data()
    {
        QTest::addColumn<PlaylistItem>("item");
        QTest::addColumn<int>("position"); // among the three written: a named one, then this one, then another
        QTest::addColumn<Playlist>("expected"); // id, trackIds and tracks are not compared

        QTest::addRow("master without a name") << PlaylistItem{.isMaster = true} << 1
                                               << Playlist{.name = "iPod Library", .isMaster = true};
        QTest::addRow("nameless ordinary") << PlaylistItem{} << 1 << Playlist{.name = "Playlist 2"};
        QTest::addRow("master word needs a 24-byte header")
            << PlaylistItem{.name = QString("A"), .isMaster = true, .dbId = 9, .headerLength = 20} << 1
            << Playlist{.name = "A"};
        QTest::addRow("id needs a 36-byte header")
            << PlaylistItem{.name = QString("A"), .isMaster = true, .dbId = 9, .headerLength = 32} << 1
            << Playlist{.name = "A", .isMaster = true};
        QTest::addRow("folder and parent")
            << PlaylistItem{.name = QString("F"), .dbId = 9, .isFolder = true, .parentDbId = 7} << 1
            << Playlist{.dbId = 9, .name = "F", .isFolder = true, .parentDbId = 7};
        QTest::addRow("folder fields need a 0x38-byte header")
            << PlaylistItem{.name = QString("F"), .dbId = 9, .isFolder = true, .parentDbId = 7, .headerLength = 0x34} << 1
            << Playlist{.dbId = 9, .name = "F"};
        for (const bool smart : {true, false}) {
            for (quint32 type : smart ? QList<quint32>{50, 51, 100, 101} : QList<quint32>{49, 52, 99, 102}) {
                PlaylistItem marked = PlaylistItem::of("S", {});
                marked.extraObjects = {StringObject::opaque(type)};
                QTest::addRow("object type %u", type) << marked << 1 << Playlist{.name = "S", .isSmart = smart};
            }
        }
    }

    void playlistHeader()
    {
        QFETCH(PlaylistItem, item);
        PlaylistItem after = PlaylistItem::of("After", {1});
        const QList<Playlist> playlists =
            parseBytes(mhbd({trackSection({one}), playlistSection({PlaylistItem::of("N", {}), item, after})})).playlists;
        QCOMPARE(playlists.size(), 3);
        Playlist parsed = playlists.at(1);
        parsed.id.clear();
        parsed.trackIds.clear();
        QTEST(parsed, "expected");
        QCOMPARE(playlists.at(2).trackIds, QList<quint32>{1}); // the walk went on past it
    }

    void stringObjects_data()
    {
        QTest::addColumn<StringObject>("object");
        QTest::addColumn<QString>("expected");
        StringObject utf8All = StringObject::utf8(1, "Caffè");
        utf8All.storedLength = 0;
        QTest::addRow("utf8 with length 0 takes all bytes") << utf8All << "Caffè";
        StringObject tooLong = StringObject::utf16(1, "Long");
        tooLong.storedLength = 1000;
        QTest::addRow("stored length beyond object takes all bytes") << tooLong << "Long";
        StringObject shorter = StringObject::utf16(1, "Long");
        shorter.storedLength = 4;
        QTest::addRow("stored length honoured") << shorter << "Lo";
        QTest::addRow("one byte of UTF-8") << StringObject::utf8(1, "X") << "X";
        QTest::addRow("trailing NULs trimmed") << StringObject{.type = 1, .text = QByteArray("T\0i\0\0\0", 6)} << "Ti";
        QTest::addRow("BOM and NULs trimmed")
            << StringObject{.type = 1, .text = QByteArray("\xff\xfeT\0i\0t\0l\0e\0\0\0\0\0", 14)} << "Title";
        QTest::addRow("bare BOM trims to empty") << StringObject{.type = 1, .text = QByteArray("\xff\xfe", 2)} << "";
        QTest::addRow("latin bytes flagged utf8 fall to mac roman")
            << StringObject{.type = 1, .text = QByteArray("Caf\x8e"), .encodingFlag = 2} << "Café";
        QTest::addRow("raw form utf16") << StringObject{.type = 1, .text = QByteArray("R\0a\0w\0", 6), .rawForm = true} << "Raw";
        StringObject headerOnly = StringObject::utf16(1, "x");
        headerOnly.totalLength = 24;
        QTest::addRow("header length equals total length") << headerOnly << "";
    }

    void stringObjects()
    {
        QFETCH(StringObject, object);
        TrackItem track{.id = 9, .strings = {object, StringObject::utf16(4, "After")}};
        const Track parsed = parseBytes(mhbd({trackSection({track})})).tracks.value(9);
        QTEST(parsed.title(), "expected");
        if (!object.totalLength)
            QCOMPARE(parsed.artist(), "After"); // the walk went on past the object
    }

    void damagedListsStopWhereTheyMust_data()
    {
        QTest::addColumn<QByteArray>("db");
        QTest::addColumn<QList<quint32>>("tracks"); // in file order
        QTest::addColumn<QList<quint32>>("entries"); // of the first playlist
        const PlaylistItem playlist = PlaylistItem::of("P", {1, 2});
        const QByteArray lists = playlistSection({playlist});

        // Only as many sections as the header says are read, and only types 1 and 2.
        QTest::addRow("a section count of one") << mhbd({trackSection({one}), lists}, 0x68, 1) << QList<quint32>{1}
                                                << QList<quint32>{};
        QTest::addRow("a podcast section first") << mhbd({trackSection({one}), mhsd(3, mhlp({mhyp(PlaylistItem::of("Pod", {}))})), lists})
                                                 << QList<quint32>{1} << QList<quint32>{1, 2};
        // A file cut short (an interrupted sync) keeps what was read: an item cut in its first 20 bytes
        // is dropped, one cut after its header words is kept without its strings.
        const QByteArray whole = mhbd({trackSection({one, two}), lists});
        const qsizetype second = whole.indexOf("mhit", whole.indexOf("mhit") + 4);
        QTest::addRow("cut inside an item's head") << whole.left(second + 10) << QList<quint32>{1} << QList<quint32>{};
        QTest::addRow("cut just after an item's words") << whole.left(second + 20) << QList<quint32>{1, 2} << QList<quint32>{};
        QTest::addRow("cut after an item's head") << whole.left(second + 30) << QList<quint32>{1, 2} << QList<quint32>{};

        // Junk between sections is stepped over 4 bytes at a time; between items, one byte at a time,
        // each step costing one of the list's item iterations.
        QTest::addRow("8 junk bytes between sections")
            << mhbd({trackSection({one, two}), QByteArray(8, 'J'), lists}, 0x68, 2) << QList<quint32>{1, 2}
            << QList<quint32>{1, 2};
        QTest::addRow("6 junk bytes misalign the section walk")
            << mhbd({trackSection({one, two}), QByteArray(6, 'J'), lists}, 0x68, 2) << QList<quint32>{1, 2}
            << QList<quint32>{};
        const QByteArray junkItems = mhit(one) + QByteArray("JJJ") + mhit(two);
        QTest::addRow("junk costs iterations") << mhbd({mhsd(1, mhlt({junkItems}, 0x5C, 2)), lists})
                                               << QList<quint32>{1} << QList<quint32>{1, 2};
        QTest::addRow("a count covering the junk") << mhbd({mhsd(1, mhlt({junkItems}, 0x5C, 5)), lists})
                                                   << QList<quint32>{1, 2} << QList<quint32>{1, 2};
        QTest::addRow("a count past its section") << mhbd({mhsd(1, mhlt({mhit(one)}, 0x5C, 1000)), trackSection({two})})
                                                  << QList<quint32>{1, 2} << QList<quint32>{};
        QTest::addRow("a list count smaller than its items")
            << mhbd({mhsd(1, mhlt({mhit(one), mhit(two)}, 0x5C, 1)), lists}) << QList<quint32>{1} << QList<quint32>{1, 2};
        // An item that lists fewer string objects than it claims still has its entries read.
        PlaylistItem overclaiming = playlist;
        overclaiming.stringCount = 3;
        QTest::addRow("entries after a short string list")
            << mhbd({trackSection({one, two}), playlistSection({overclaiming})}) << QList<quint32>{1, 2}
            << QList<quint32>{1, 2};
        // A chunk that claims no length ends the walk of its list, so nothing is read twice.
        TrackItem zeroItem = one;
        zeroItem.totalLength = 0;
        QTest::addRow("track item of length 0") << mhbd({trackSection({zeroItem, two}), lists}) << QList<quint32>{1}
                                                << QList<quint32>{1, 2};
        TrackItem zeroString = one;
        zeroString.strings.first().totalLength = 0;
        zeroString.stringCount = 1000000;
        QTest::addRow("string object of length 0") << mhbd({trackSection({zeroString, two}), lists})
                                                   << QList<quint32>{1, 2} << QList<quint32>{1, 2};
        PlaylistItem zeroEntry = playlist;
        zeroEntry.entries.first().totalLength = 0;
        zeroEntry.entryCount = 1000000;
        QTest::addRow("playlist entry of length 0") << mhbd({trackSection({one, two}), playlistSection({zeroEntry})})
                                                    << QList<quint32>{1, 2} << QList<quint32>{1};
        PlaylistItem overcounted = playlist;
        overcounted.entryCount = 1000000; // the last item of the file
        QTest::addRow("entries claimed past the end") << mhbd({trackSection({one, two}), playlistSection({overcounted})})
                                                      << QList<quint32>{1, 2} << QList<quint32>{1, 2};
        QTest::addRow("entries claimed past the next playlist")
            << mhbd({trackSection({one, two}), playlistSection({overcounted, PlaylistItem::of("After", {2})})})
            << QList<quint32>{1, 2} << QList<quint32>{1, 2};
        QTest::addRow("section of length 0")
            << mhbd({mhsd(1, mhlt({mhit(one), mhit(two)}), 0x60, 0), lists}, 0x68, 1000000) << QList<quint32>{}
            << QList<quint32>{};
    }

    void damagedListsStopWhereTheyMust()
    {
        QFETCH(QByteArray, db);
        ParseWork work;
        const ParseResult result = ITunesDBParser().parse(db, &work);
        QTEST(result.trackItemIds, "tracks");
        QTEST(result.playlists.isEmpty() ? QList<quint32>{} : result.playlists.first().trackIds, "entries");
        QVERIFY2(work.iterations < 100, "the walk must not re-read the same chunk");
        QCOMPARE(result.looksTruncated, QByteArray(QTest::currentDataTag()).startsWith("cut"));
    }

    void largeLibraryReadsAsOneWalkFromTheStart_data()
    {
        QTest::addColumn<bool>("fakeItemsInTitles");
        QTest::addColumn<int>("listedCount");
        QTest::addRow("well formed") << false << 8000;
        QTest::addRow("titles full of what looks like track items") << true << 8000;
        QTest::addRow("the list counts fewer items than it holds") << false << 7993;
    }

    void largeLibraryReadsAsOneWalkFromTheStart()
    {
        // Large enough for the track list to be shared between two threads and the file read by megabytes:
        // whatever one thread guesses about where items start, the result is that of one walk.
        QFETCH(bool, fakeItemsInTitles);
        QFETCH(int, listedCount);
        const QList<QByteArray> items = largeTrackList(fakeItemsInTitles);
        QList<quint32> ids;
        for (quint32 id = 1; id <= quint32(items.size()); ++id)
            ids.append(id);
        const PlaylistItem thrice = PlaylistItem::of("All thrice", ids + ids + ids);
        const QByteArray db = mhbd({mhsd(1, mhlt(items, 0x5C, quint32(listedCount))), playlistSection({thrice})});
        QVERIFY(db.size() > 5'000'000);
        QTemporaryDir dir;
        writeFile(dir.filePath("iTunesDB"), db);

        const QList<quint32> expectedIds = ids.first(listedCount);
        for (const ParseResult &result : {parseBytes(db), ITunesDBParser().parse(QUrl::fromLocalFile(dir.filePath("iTunesDB")))}) {
            QCOMPARE(result.trackItemIds, expectedIds);
            QCOMPARE(result.tracks.value(4000).ipodPath(), ":iPod_Control:Music:F00:4000.mp3");
            if (!fakeItemsInTitles)
                QCOMPARE(result.tracks.value(listedCount).title(), QString("Song %1").arg(listedCount).leftJustified(300, u'.'));
            QCOMPARE(idsOf(result.playlists.value(0).tracks), expectedIds + expectedIds + expectedIds);
        }
    }

    void aFileCutWhileReadFailsAsOneWalkWould()
    {
        // The tracks come last, so the cut reaches only the part of their list that a second thread reads;
        // one walk from the start would come to the cut all the same.
        const QByteArray db = mhbd({playlistSection({PlaylistItem::of("Few", {1, 2, 3})}), mhsd(1, mhlt(largeTrackList(false)))});
        QTemporaryDir dir;
        const QString path = dir.filePath("iTunesDB");
        writeFile(path, db);
        bool cut = false;
        try {
            (void)ITunesDBParser().parse(QUrl::fromLocalFile(path), [&](int) {
                if (!std::exchange(cut, true))
                    QFile::resize(path, db.size() * 8 / 10);
            });
            QFAIL("expected a ParseError");
        } catch (const ParseError &error) {
            QCOMPARE(error.kind(), ParseError::Kind::readFailed);
        }
    }

    void readingTheFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("iTunesDB");
        QVERIFY_THROWS_EXCEPTION(FileSystemError, (void)ITunesDBParser().parse(QUrl::fromLocalFile(path)));

        writeFile(path, ITunesDBWriter().addPlaylist(PlaylistItem::of("From disk", {})).build());
        QList<int> reported;
        const ParseResult result =
            ITunesDBParser().parse(QUrl::fromLocalFile(path), [&reported](int percent) { reported.append(percent); });
        QCOMPARE(result.playlists.value(0).name, "From disk");
        QCOMPARE(reported, QList<int>{100});

        // A FIFO would block a reader for ever: it is refused at once, as a folder is.
        const QString fifo = dir.filePath("fifo");
        QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
        for (const QString &special : {fifo, dir.path()}) {
            try {
                (void)ITunesDBParser().parse(QUrl::fromLocalFile(special));
                QFAIL("expected a ParseError");
            } catch (const ParseError &error) {
                QCOMPARE(error.kind(), ParseError::Kind::readFailed);
                QVERIFY2(error.errorDescription().contains("non è un file normale"), qPrintable(error.errorDescription()));
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestITunesDBParser)
#include "tst_itunesdbparser.moc"
