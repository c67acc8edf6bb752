#include "PlayCounts.h"

#include "BinaryReader.h"

#include <QFile>
#include <QFileInfo>

namespace kestrune {

namespace {

// A real file holds one short entry per track; this is far beyond any iPod's library.
constexpr qint64 largestPlayCountsFile = 64 * 1024 * 1024;

} // namespace

std::optional<QList<PlayCountEntry>> parsePlayCounts(const QByteArray &bytes)
{
    BinaryReader reader(bytes);
    if (reader.readFourCC(QLatin1StringView("mhdp")) != BinaryReader::TagMatch::matches)
        return std::nullopt;
    const std::optional<quint32> headerLength = reader.readUInt32LE();
    const std::optional<quint32> entryLength = reader.readUInt32LE();
    const std::optional<quint32> count = reader.readUInt32LE();
    if (!count || *headerLength < 16 || *headerLength > quint32(bytes.size()) || *entryLength < 12)
        return std::nullopt;
    const qsizetype held = qMin<qsizetype>(*count, (bytes.size() - *headerLength) / *entryLength);
    QList<PlayCountEntry> entries;
    entries.reserve(held);
    for (qsizetype i = 0; i < held; ++i) {
        const qsizetype start = *headerLength + i * *entryLength;
        const auto wordAt = [&](qsizetype offset) {
            reader.seek(start + offset);
            return *reader.readUInt32LE();
        };
        PlayCountEntry entry{.plays = wordAt(0), .lastPlayed = wordAt(4)};
        if (*entryLength >= 16)
            entry.rating = quint8(qMin(wordAt(12), 100u));
        if (*entryLength >= 28)
            entry.skips = wordAt(20);
        entries.append(entry);
    }
    return entries;
}

std::optional<QList<PlayCountEntry>> readPlayCounts(const QString &iTunesFolder)
{
    QFile file(iTunesFolder + QStringLiteral("/Play Counts"));
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly)) // a FIFO would block the reader
        return std::nullopt;
    return parsePlayCounts(file.read(largestPlayCountsFile));
}

void applyPlayCounts(QHash<quint32, Track> &tracks, const QList<quint32> &trackItemIds,
                     const QList<PlayCountEntry> &entries)
{
    const qsizetype applicable = qMin(entries.size(), trackItemIds.size());
    for (qsizetype i = 0; i < applicable; ++i) {
        const auto track = tracks.find(trackItemIds.at(i));
        if (track == tracks.end())
            continue;
        const PlayCountEntry &entry = entries.at(i);
        TrackFields &fields = track->editFields();
        fields.playCount += entry.plays;
        fields.skipCount += entry.skips;
        fields.lastPlayed = qMax(fields.lastPlayed, entry.lastPlayed);
        if (entry.rating)
            fields.rating = *entry.rating;
    }
}

LibraryStatistics libraryStatistics(ParseResult library, const QString &iTunesFolder)
{
    LibraryStatistics statistics;
    if (const std::optional<QList<PlayCountEntry>> entries = readPlayCounts(iTunesFolder)) {
        for (const PlayCountEntry &entry : *entries)
            statistics.playsSinceSync += entry.plays;
        applyPlayCounts(library.tracks, library.trackItemIds, *entries);
    } else {
        statistics.playCountsUnreadable = QFileInfo::exists(iTunesFolder + QStringLiteral("/Play Counts"));
    }
    statistics.tracks = library.tracksInOrder();
    return statistics;
}

} // namespace kestrune
