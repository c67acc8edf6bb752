#include "ITunesDBParser.h"

#include "ChunkWalk.h"
#include "MhodText.h"
#include "ParseError.h"
#include "Prefetch.h"
#include "TrackTexts.h"

#include <QUuid>

#include <vector>

namespace kestrune {

namespace {

using namespace chunkwalk;

// Object types of a track's string objects.
enum MhodType : quint32 {
    mhodTitle = 1,
    mhodPath = 2,
    mhodAlbum = 3,
    mhodArtist = 4,
    mhodGenre = 5,
    mhodComposer = 12,
};

// Any of these in a playlist item marks it smart; 100 and 101 included, as real databases have them.
bool isSmartMarker(quint32 type)
{
    return type == 50 || type == 51 || type == 100 || type == 101;
}

std::optional<TrackTexts::Field> trackTextField(quint32 type)
{
    switch (type) {
    case mhodTitle:
        return TrackTexts::title;
    case mhodPath:
        return TrackTexts::ipodPath;
    case mhodAlbum:
        return TrackTexts::album;
    case mhodArtist:
        return TrackTexts::artist;
    case mhodGenre:
        return TrackTexts::genre;
    case mhodComposer:
        return TrackTexts::composer;
    default:
        return std::nullopt;
    }
}

// The text bytes of a string object, with the form they are in; none when there are none.
struct MhodPayload {
    QByteArrayView bytes;
    bool structured = false; // behind a string header, which tells UTF-8 from UTF-16
    bool flaggedUtf8 = false;
};

std::optional<MhodPayload> readMhodPayload(BinaryReader &reader, qsizetype mhodStart, quint32 headerLen,
                                           quint32 totalLen, ParseBudget &budget)
{
    if (headerLen >= totalLen)
        return std::nullopt;
    const qint64 payloadLen = qint64(totalLen) - headerLen;
    MhodPayload payload;
    qint64 byteCount = payloadLen;
    reader.seek(mhodStart + headerLen);
    if (payloadLen >= 16) {
        payload.structured = true;
        payload.flaggedUtf8 = reader.readUInt32LE() == 2u;
        const quint32 storedLength = reader.readUInt32LE().value_or(0);
        reader.skip(8);
        const qint64 available = payloadLen - 16;
        byteCount = (storedLength != 0 && storedLength <= available) ? storedLength : available;
        if (byteCount < 1)
            return std::nullopt;
    }
    const std::optional<QByteArrayView> bytes = reader.readView(byteCount);
    if (!bytes || !budget.spendDecodedBytes(bytes->size()))
        return std::nullopt;
    payload.bytes = *bytes;
    return payload;
}

QString decodeMhodPayload(const MhodPayload &payload)
{
    return trimMhodText(payload.structured ? decodeStructuredMhodText(payload.bytes, payload.flaggedUtf8)
                                           : decodeRawMhodText(payload.bytes));
}

QString readMhodString(BinaryReader &reader, qsizetype mhodStart, quint32 headerLen, quint32 totalLen,
                       ParseBudget &budget)
{
    const std::optional<MhodPayload> payload = readMhodPayload(reader, mhodStart, headerLen, totalLen, budget);
    return payload ? decodeMhodPayload(*payload) : QString();
}

// The statistics words of a track item, each read only when the item's header reaches it: older
// databases have shorter headers.
void readStatistics(BinaryReader &reader, const ItemHead &item, TrackFields &track)
{
    const auto wordAt = [&](qsizetype offset) {
        reader.seek(item.start + offset);
        return reader.readUInt32LE().value_or(0);
    };
    if (item.headerLen >= 32) {
        reader.seek(item.start + 31);
        track.rating = reader.readUInt8().value_or(0);
    }
    if (item.headerLen >= 92) {
        track.playCount = wordAt(80);
        track.lastPlayed = wordAt(88);
    }
    if (item.headerLen >= 160)
        track.skipCount = wordAt(156);
}

void resolveTracks(QList<Playlist> &playlists, const QHash<quint32, Track> &tracks)
{
    // Random tracks of a large table are cache misses. Looking them all up first lets those lookups
    // overlap, and fetching a few tracks ahead hides most of the wait while copying.
    constexpr qsizetype lookahead = 8;
    std::vector<const Track *> found;
    for (Playlist &playlist : playlists) {
        found.clear();
        found.reserve(size_t(playlist.trackIds.size()));
        for (quint32 trackId : std::as_const(playlist.trackIds)) {
            const auto at = tracks.constFind(trackId);
            if (at != tracks.constEnd())
                found.push_back(&*at);
        }
        playlist.tracks.reserve(qsizetype(found.size()));
        for (size_t i = 0; i < found.size(); ++i) {
            if (i + lookahead < found.size())
                prefetchTrack(*found[i + lookahead]);
            playlist.tracks.append(*found[i]);
        }
    }
}

} // namespace

ParseResult ITunesDBParser::parse(const QUrl &fileURL, const ReadProgress &progress) const
{
    DatabaseFile file(fileURL.toLocalFile(), progress);
    BinaryReader reader(file);
    ParseResult result = parse(reader, nullptr);
    file.finish();
    return result;
}

ParseResult ITunesDBParser::parse(const QByteArray &data, ParseWork *work) const
{
    BinaryReader reader(data);
    return parse(reader, work);
}

ParseResult ITunesDBParser::parse(BinaryReader &reader, ParseWork *work) const
{
    const qsizetype dataSize = reader.size();
    if (dataSize < 32)
        throw ParseError::fileTooSmall();

    if (!readTag(reader, QLatin1StringView("mhbd")))
        throw ParseError::invalidHeader();

    // The size check above leaves every word of the header readable.
    const quint32 headerLen = *reader.readUInt32LE();
    const quint32 declaredLength = *reader.readUInt32LE(); // the whole file's, when intact
    reader.skip(8);
    const quint32 sectionCount = *reader.readUInt32LE();

    ParseBudget budget(dataSize);
    ParseResult result;
    result.looksTruncated = qint64(declaredLength) > dataSize;
    reader.seek(headerLen);

    quint32 sectionsRead = 0;
    while (reader.remainingBytes() >= 12 && sectionsRead < sectionCount && budget.spendIteration()) {
        const qsizetype chunkStart = reader.offset();
        const BinaryReader::TagMatch tag = reader.readFourCC(QLatin1StringView("mhsd"));
        if (tag == BinaryReader::TagMatch::unreadable)
            break;
        if (tag == BinaryReader::TagMatch::differs) {
            reader.seek(chunkStart + 4);
            continue;
        }
        const std::optional<quint32> sectionHeaderLen = reader.readUInt32LE();
        const std::optional<quint32> sectionTotalLen = reader.readUInt32LE();
        const std::optional<quint32> sectionType = reader.readUInt32LE();
        if (!sectionHeaderLen || !sectionTotalLen || !sectionType || !budget.spendChunk())
            break;
        reader.seek(chunkStart + *sectionHeaderLen);
        const qsizetype sectionEnd = chunkStart + *sectionTotalLen;
        result.looksTruncated = result.looksTruncated || sectionEnd > dataSize;

        if (*sectionType == 1) {
            QList<Track> tracks = parseTrackList(reader, sectionEnd, budget);
            result.tracks.reserve(result.tracks.size() + tracks.size());
            for (Track &track : tracks) {
                const qsizetype known = result.tracks.size();
                const quint32 id = track.id();
                result.trackItemIds.append(id);
                result.tracks[id] = std::move(track); // a later record with the same id wins
                if (result.tracks.size() != known)
                    result.trackOrder.append(id);
            }
        } else if (*sectionType == 2) {
            result.playlists.append(parsePlaylistList(reader, sectionEnd, budget));
        }

        reader.release(chunkStart, sectionEnd); // what was read from it is decoded by now
        reader.seek(sectionEnd);
        ++sectionsRead;
        if (*sectionTotalLen == 0)
            break; // the cursor cannot move past this section
    }

    resolveTracks(result.playlists, result.tracks);
    if (work)
        *work = budget.spent();
    return result;
}

QList<Track> ITunesDBParser::parseTrackList(BinaryReader &reader, qsizetype sectionEnd,
                                            ParseBudget &budget) const
{
    QList<Track> tracks;
    const std::optional<quint32> count = openList(reader, QLatin1StringView("mhlt"), budget);
    if (count) // every item needs at least 20 bytes, whatever the count claims
        tracks.reserve(std::min<qsizetype>(*count, reader.remainingBytes() / 20));
    for (quint32 index = 0; count && index < *count && budget.spendIteration(); ++index) {
        ItemHead item;
        const ItemStep step = nextItem(reader, QLatin1StringView("mhit"), sectionEnd, 20, budget, item);
        if (step == ItemStep::stop)
            break;
        if (step == ItemStep::skipped)
            continue;
        reader.releaseBefore(item.start);

        TrackFields track{.id = item.word16};
        if (item.headerLen >= 60) {
            reader.seek(item.start + 36);
            track.fileSize = reader.readUInt32LE().value_or(0);
            track.totalTimeMs = reader.readUInt32LE().value_or(0);
            track.trackNumber = reader.readUInt32LE().value_or(0);
            reader.readUInt32LE(); // total tracks, not used
            track.year = reader.readUInt32LE().value_or(0);
            track.bitrate = reader.readUInt32LE().value_or(0);
        }
        readStatistics(reader, item, track);
        reader.seek(item.start + item.headerLen);
        TrackTexts texts;
        walkDataObjects(reader, item.end(), item.word12, budget,
                        [&](quint32 type, qsizetype start, quint32 headerLen, quint32 totalLen) {
                            const std::optional<TrackTexts::Field> field = trackTextField(type);
                            if (!field)
                                return;
                            const std::optional<MhodPayload> payload =
                                readMhodPayload(reader, start, headerLen, totalLen, budget);
                            if (!payload)
                                texts.setDecoded(*field, QString());
                            else if (payload->structured && !payload->flaggedUtf8 && isPlainUtf16Text(payload->bytes))
                                texts.setUtf16(*field, payload->bytes); // its own text: taken as it is
                            else
                                texts.setDecoded(*field, decodeMhodPayload(*payload));
                        });
        texts.moveInto(track);
        tracks.append(Track(std::move(track)));
        reader.seek(item.end());
        if (item.totalLen == 0)
            break;
    }
    return tracks;
}

QList<Playlist> ITunesDBParser::parsePlaylistList(BinaryReader &reader, qsizetype sectionEnd,
                                                  ParseBudget &budget) const
{
    QList<Playlist> playlists;
    const std::optional<quint32> count = openList(reader, QLatin1StringView("mhlp"), budget);
    for (quint32 index = 0; count && index < *count && budget.spendIteration(); ++index) {
        ItemHead item;
        const ItemStep step = nextItem(reader, QLatin1StringView("mhyp"), sectionEnd, 24, budget, item);
        if (step == ItemStep::stop)
            break;
        if (step == ItemStep::skipped)
            continue;
        reader.releaseBefore(item.start);

        Playlist playlist;
        if (item.headerLen >= 24)
            playlist.isMaster = reader.readUInt32LE() == 1u;
        if (item.headerLen >= 36) {
            reader.seek(item.start + 28);
            playlist.dbId = reader.readUInt64LE().value_or(0);
        }
        if (item.headerLen >= 0x38) { // iTunes 7 and later: playlist folders
            reader.seek(item.start + 0x2A);
            playlist.isFolder = (reader.readUInt16LE().value_or(0) & 0x0100) != 0;
            reader.seek(item.start + 0x30);
            playlist.parentDbId = reader.readUInt64LE().value_or(0);
        }
        reader.seek(item.start + item.headerLen);
        walkDataObjects(reader, item.end(), item.word12, budget,
                        [&](quint32 type, qsizetype start, quint32 headerLen, quint32 totalLen) {
                            if (isSmartMarker(type))
                                playlist.isSmart = true;
                            else if (type == mhodTitle)
                                playlist.name = readMhodString(reader, start, headerLen, totalLen, budget);
                        });
        playlist.trackIds = readEntries(reader, item.word16, budget);

        if (playlist.name.isEmpty()) {
            playlist.name = playlist.isMaster
                                ? QStringLiteral("iPod Library")
                                : QStringLiteral("Playlist ") + QString::number(playlists.size() + 1);
        }
        playlist.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
        playlists.append(std::move(playlist));
        reader.seek(item.end());
        if (item.totalLen == 0)
            break;
    }
    return playlists;
}

} // namespace kestrune
