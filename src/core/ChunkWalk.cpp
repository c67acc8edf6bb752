#include "ChunkWalk.h"

namespace kestrune::chunkwalk {

namespace {

// The track id of one playlist entry: +24, else +20, else +16, the first non-zero word.
quint32 readEntryTrackId(BinaryReader &reader, qsizetype entryStart, quint32 headerLen)
{
    quint32 trackId = 0;
    if (headerLen >= 28) {
        reader.seek(entryStart + 24);
        trackId = reader.readUInt32LE().value_or(0);
    }
    if (trackId == 0 && headerLen >= 24) {
        reader.seek(entryStart + 20);
        trackId = reader.readUInt32LE().value_or(0);
    }
    if (trackId == 0) {
        reader.seek(entryStart + 16);
        trackId = reader.readUInt32LE().value_or(0);
    }
    return trackId;
}

} // namespace

// The head of a list chunk ("mhlt", "mhlp"): moves to its first item and gives the item count.
std::optional<quint32> openList(BinaryReader &reader, QLatin1StringView tag, ParseBudget &budget)
{
    if (reader.remainingBytes() < 12)
        return std::nullopt;
    const qsizetype listStart = reader.offset();
    if (!readTag(reader, tag))
        return std::nullopt;
    const std::optional<quint32> headerLen = reader.readUInt32LE();
    const std::optional<quint32> count = reader.readUInt32LE();
    if (!headerLen || !count || !budget.spendChunk())
        return std::nullopt;
    reader.seek(listStart + *headerLen);
    return count;
}

// Reads the item at the cursor. Another tag moves one byte on, and the caller counts that as an item.
ItemStep nextItem(BinaryReader &reader, QLatin1StringView tag, qsizetype sectionEnd, qsizetype minimumBytes,
                  ParseBudget &budget, ItemHead &item)
{
    if (reader.offset() >= sectionEnd || reader.remainingBytes() < minimumBytes)
        return ItemStep::stop;
    item.start = reader.offset();
    switch (reader.readFourCC(tag)) {
    case BinaryReader::TagMatch::unreadable:
        return ItemStep::stop;
    case BinaryReader::TagMatch::differs:
        reader.seek(item.start + 1);
        return ItemStep::skipped;
    case BinaryReader::TagMatch::matches:
        break;
    }
    const std::optional<quint32> headerLen = reader.readUInt32LE();
    const std::optional<quint32> totalLen = reader.readUInt32LE();
    const std::optional<quint32> word12 = reader.readUInt32LE();
    const std::optional<quint32> word16 = reader.readUInt32LE();
    if (!headerLen || !totalLen || !word12 || !word16 || !budget.spendChunk())
        return ItemStep::stop;
    item.headerLen = *headerLen;
    item.totalLen = *totalLen;
    item.word12 = *word12;
    item.word16 = *word16;
    return ItemStep::found;
}

// The track ids of up to `count` playlist entries ("mhip") from the cursor; 0 adds nothing.
QList<quint32> readEntries(BinaryReader &reader, quint32 count, ParseBudget &budget)
{
    QList<quint32> trackIds;
    trackIds.reserve(std::min<qsizetype>(count, reader.remainingBytes() / 24)); // each entry takes 24 bytes or more
    for (quint32 index = 0; index < count && budget.spendIteration(); ++index) {
        if (reader.remainingBytes() < 24)
            break;
        const qsizetype entryStart = reader.offset();
        reader.releaseBefore(entryStart);
        if (!readTag(reader, QLatin1StringView("mhip")) || !budget.spendChunk())
            break;
        const quint32 headerLen = reader.readUInt32LE().value_or(0);
        const quint32 totalLen = reader.readUInt32LE().value_or(0);
        if (const quint32 trackId = readEntryTrackId(reader, entryStart, headerLen))
            trackIds.append(trackId);
        reader.seek(entryStart + totalLen);
        if (totalLen == 0)
            break;
    }
    return trackIds;
}

} // namespace kestrune::chunkwalk
