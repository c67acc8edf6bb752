#pragma once

#include "CliOutput.h"
#include "SourceDatabase.h"
#include "export/PlaylistRun.h"

#include <QCommandLineParser>
#include <QJsonObject>

namespace kestrune::cli {

// How a playlist run is told: a line per playlist and per file mirror removed or kept, then a summary;
// or the same as JSON, every result with its "status".
void printPlaylistRun(const PlaylistRunReport &report, const QString &destination, bool dryRun, CliOutput &output);
[[nodiscard]] QJsonObject playlistRunJson(const PlaylistRunReport &report, const QString &destination);

// 1 when a playlist, a removal or a dot file failed, or mirror could not run; else 0.
[[nodiscard]] int playlistRunStatus(const PlaylistRunReport &report);

// How often each persistent id occurs among the library's playlists.
[[nodiscard]] QHash<quint64, int> libraryIdCounts(const QList<Playlist> &playlists);

// The names of the options a command takes that shape a playlist run; an empty name is an option the
// command does not have.
struct PlaylistRequestOptions {
    QString playlist, includeMaster, m3u, noExtinf, prefix, noSanitize, noClean, force, dryRun, splitLong, onTheGo,
        folders, mirror;

    static PlaylistRequestOptions all()
    {
        return {QStringLiteral("playlist"),  QStringLiteral("include-master"), QStringLiteral("m3u"),
                QStringLiteral("no-extinf"), QStringLiteral("prefix"),         QStringLiteral("no-sanitize"),
                QStringLiteral("no-clean"),  QStringLiteral("force"),          QStringLiteral("dry-run"),
                QStringLiteral("split-long"), QStringLiteral("on-the-go"),     QStringLiteral("folders"),
                QStringLiteral("mirror")};
    }
};

// The run the options ask for: the chosen playlists (On-The-Go ones added, folders flattened, long ones
// split) with their existing files attached. Reports a playlist named but not found, and gives none.
std::optional<PlaylistRunRequest> playlistRequest(const QCommandLineParser &parser, const PlaylistRequestOptions &names,
                                                  const Source &source, ParseResult &library, const QString &destination,
                                                  CliOutput &output);

// Why --mirror cannot run in the scope (not an iPod, no .rockbox folder); none when it can.
std::optional<QString> mirrorProblem(const WriteScope &scope);
// Why a prefix cannot be used; none when it can.
std::optional<QString> prefixProblem(const QString &prefix);

} // namespace kestrune::cli
