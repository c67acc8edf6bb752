#pragma once

#include "ParseResult.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

namespace kestrune {

// What the iPod counted for one track since the last sync. The iPod keeps these apart from the database,
// in "iPod_Control/iTunes/Play Counts", until the next sync merges them: an "mhdp" header with its length
// at +4, the entry length at +8 and the entry count at +12, then one entry per track item in file order.
struct PlayCountEntry {
    quint32 plays = 0;
    quint32 lastPlayed = 0;       // Mac epoch seconds; 0 for none
    std::optional<quint8> rating; // stars x 20; entries of 16 bytes or more carry the current rating
    quint32 skips = 0;            // entries of 28 bytes or more

    bool operator==(const PlayCountEntry &) const = default;
};

// The entries of a Play Counts file, or none when the bytes are not one. Counts are not trusted: no more
// entries are read than the file holds.
std::optional<QList<PlayCountEntry>> parsePlayCounts(const QByteArray &bytes);

// Reads "Play Counts" in `iTunesFolder`; none when there is no such regular file or it is not one.
std::optional<QList<PlayCountEntry>> readPlayCounts(const QString &iTunesFolder);

// Adds each entry to the track of the same position in `trackItemIds` (the database's track items in file
// order): plays and skips add up, the later last play wins, a rating replaces the database's. Entries
// beyond the track list are ignored.
void applyPlayCounts(QHash<quint32, Track> &tracks, const QList<quint32> &trackItemIds,
                     const QList<PlayCountEntry> &entries);

// A library's tracks in database order, with the plays since the last sync added.
struct LibraryStatistics {
    QList<Track> tracks;
    qint64 playsSinceSync = 0;
    bool playCountsUnreadable = false; // a "Play Counts" file is there but is not one
};

// Reads "Play Counts" in `iTunesFolder` (iPod_Control/iTunes) and applies it to the library's tracks.
LibraryStatistics libraryStatistics(ParseResult library, const QString &iTunesFolder);

} // namespace kestrune
