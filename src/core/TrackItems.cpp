#include "TrackItems.h"

#include "ChunkWalk.h"
#include "MhodPayload.h"
#include "MhodText.h"
#include "TrackTexts.h"

namespace kestrune {

namespace {

using namespace chunkwalk;

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
    case mhodAlbumArtist:
        return TrackTexts::albumArtist;
    default:
        return std::nullopt;
    }
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

// The persistent id and, from iTunes 7.4 on, the cover's image id.
void readIdentity(BinaryReader &reader, const ItemHead &item, TrackFields &track)
{
    if (item.headerLen >= 120) {
        reader.seek(item.start + 112);
        track.dbId = reader.readUInt64LE().value_or(0);
    }
    if (item.headerLen >= 0x184) {
        reader.seek(item.start + 352);
        track.artworkId = reader.readUInt32LE().value_or(0);
    }
}

Track readTrackItem(BinaryReader &reader, const ItemHead &item, ParseBudget &budget)
{
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
    readIdentity(reader, item, track);
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
    return Track(std::move(track));
}

// The lengths of an item that could start at `at`, when its tag is there and they are plausible.
std::optional<quint32> plausibleItemLength(BinaryReader &reader, qsizetype at)
{
    reader.seek(at);
    if (reader.remainingBytes() < 20 || reader.readFourCC(QLatin1StringView("mhit")) != BinaryReader::TagMatch::matches)
        return std::nullopt;
    const quint32 headerLen = reader.readUInt32LE().value_or(0);
    const quint32 totalLen = reader.readUInt32LE().value_or(0);
    if (headerLen < 20 || totalLen < headerLen)
        return std::nullopt;
    return totalLen;
}

} // namespace

void walkTrackItems(BinaryReader &reader, qsizetype sectionEnd, quint32 maxSteps, qsizetype stopAt,
                    ParseBudget &budget, TrackItemWalk &walk, bool recordSteps)
{
    while (walk.steps < maxSteps) {
        if (reader.offset() == stopAt) {
            walk.reachedStop = true;
            return;
        }
        if (!budget.spendIteration())
            return;
        const quint32 step = walk.steps++;
        ItemHead item;
        const ItemStep found = nextItem(reader, QLatin1StringView("mhit"), sectionEnd, 20, budget, item);
        if (found == ItemStep::stop)
            return;
        if (found == ItemStep::skipped)
            continue;
        reader.releaseBefore(item.start);
        walk.tracks.append(readTrackItem(reader, item, budget));
        if (recordSteps)
            walk.stepOfTrack.append(step);
        reader.seek(item.end());
        if (item.totalLen == 0)
            return;
    }
}

qsizetype findItemBoundary(BinaryReader &reader, qsizetype from, qsizetype sectionEnd)
{
    constexpr qsizetype searched = 64 * 1024;
    const qsizetype end = std::min({sectionEnd, from + searched, reader.size()});
    for (qsizetype at = from; at < end; ++at) {
        qsizetype next = at;
        int hops = 0;
        for (; hops < 3 && next < sectionEnd; ++hops) {
            const std::optional<quint32> length = plausibleItemLength(reader, next);
            if (!length || *length == 0)
                break;
            next += *length;
        }
        if (hops == 3 || (hops > 0 && next >= sectionEnd))
            return at;
    }
    return -1;
}

} // namespace kestrune
