#pragma once

#include "ParseResult.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace kestrune {

// On-The-Go playlists made on the iPod since the last sync. They live beside the database, in
// "OTGPlaylistInfo", "OTGPlaylistInfo_1", "_2"...: an "mhpo" header whose length is at +4 and entry count
// at +8, then one 4-byte little-endian index per entry into the track list in file order.
struct OnTheGoPlaylists {
    QList<Playlist> playlists; // "On-The-Go 1", "On-The-Go 2"..., the files that hold entries, in order
    QStringList problems;      // one line per file that was skipped, and why
};

// The entry indexes of one file, or none when it is no On-The-Go file. Counts are not trusted: no more
// entries are read than the file holds.
std::optional<QList<quint32>> parseOnTheGoFile(const QByteArray &bytes);

// Reads the files in `iTunesFolder` (iPod_Control/iTunes) and resolves them against the library. A file
// whose index points past the track list was made for another database: it is reported and skipped,
// never guessed at.
OnTheGoPlaylists readOnTheGoPlaylists(const QString &iTunesFolder, const ParseResult &library);

} // namespace kestrune
