#pragma once

#include "BinaryReader.h"
#include "ParseBudget.h"

#include <QLatin1StringView>
#include <QList>

#include <optional>

// Steps shared by the parser's walks over list chunks and their items. Every step spends from the parse
// budget and stops, rather than fails, on damaged data.
namespace kestrune::chunkwalk {

// Reads a four-byte tag and tells whether it is `expected`. An unreadable tag is a mismatch.
inline bool readTag(BinaryReader &reader, QLatin1StringView expected)
{
    return reader.readFourCC(expected) == BinaryReader::TagMatch::matches;
}

// The head of a list chunk ("mhlt", "mhlp"): moves to its first item and gives the item count.
std::optional<quint32> openList(BinaryReader &reader, QLatin1StringView tag, ParseBudget &budget);

// The words every list item starts with. The two at +12 and +16 are counts or the track id.
struct ItemHead {
    qsizetype start = 0;
    quint32 headerLen = 0;
    quint32 totalLen = 0;
    quint32 word12 = 0;
    quint32 word16 = 0;

    [[nodiscard]] qsizetype end() const { return start + totalLen; }
};

enum class ItemStep { found, skipped, stop };

// Reads the item at the cursor. Another tag moves one byte on, and the caller counts that as an item.
ItemStep nextItem(BinaryReader &reader, QLatin1StringView tag, qsizetype sectionEnd, qsizetype minimumBytes,
                  ParseBudget &budget, ItemHead &item);

// The track ids of up to `count` playlist entries ("mhip") from the cursor; an id of 0 adds nothing.
QList<quint32> readEntries(BinaryReader &reader, quint32 count, ParseBudget &budget);

// Walks up to `count` data objects ("mhod") from the cursor, calling
// visit(type, objectStart, headerLen, totalLen) for each. Stops at the item's end, when fewer than 16 bytes
// remain, or at another tag, leaving the cursor on that tag.
template <typename Visit>
void walkDataObjects(BinaryReader &reader, qsizetype itemEnd, quint32 count, ParseBudget &budget,
                     Visit &&visit)
{
    for (quint32 index = 0; index < count && budget.spendIteration(); ++index) {
        if (reader.offset() >= itemEnd || reader.remainingBytes() < 16)
            break;
        const qsizetype start = reader.offset();
        if (!readTag(reader, QLatin1StringView("mhod"))) {
            reader.seek(start); // a playlist's entries may start right here
            break;
        }
        const quint32 headerLen = reader.readUInt32LE().value_or(0);
        const quint32 totalLen = reader.readUInt32LE().value_or(0);
        const quint32 type = reader.readUInt32LE().value_or(0);
        if (!budget.spendChunk())
            break;
        visit(type, start, headerLen, totalLen);
        reader.seek(start + totalLen);
        if (totalLen == 0)
            break;
    }
}

} // namespace kestrune::chunkwalk
