#pragma once

#include "CliOutput.h"
#include "core/ParseResult.h"

#include <QString>

#include <optional>

namespace kestrune::cli {

// What a SOURCE argument names: an iPod root or backup folder, or a database file itself.
struct Source {
    QString databasePath;
    // The playlists folder beside the database: ROOT/Playlists when the source is an iPod tree.
    std::optional<QString> playlistsFolder;
    // ROOT itself, where the music and the player's settings are.
    std::optional<QString> deviceRoot;
};

// Resolves SOURCE the way the device detector recognises an iPod folder. Reports a one-line error and
// gives none when SOURCE is neither.
std::optional<Source> resolveSource(const QString &argument, CliOutput &output);

// Parses the source's database, reporting a read or parse failure as one line and giving null. The library
// is kept until the process ends and is never freed: freeing half a million playlist entries one by one
// would take a good part of the parse's own time, for memory the system takes back whole at exit.
ParseResult *loadDatabase(const Source &source, CliOutput &output);

// The On-The-Go playlists beside the source's database; files that do not fit it are reported as warnings.
QList<Playlist> onTheGoPlaylists(const Source &source, const ParseResult &library, CliOutput &output);

} // namespace kestrune::cli
