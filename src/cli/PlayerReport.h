#pragma once

#include "CliOutput.h"
#include "SourceDatabase.h"
#include "device/RockboxPlayer.h"
#include "export/PlaylistWarnings.h"

#include <QJsonArray>

#include <optional>

namespace kestrune::cli {

// The player on a source's device: what Rockbox keeps of a playlist, and, when the source holds the
// music, which files are really there.
struct Player {
    RockboxPlayer rockbox;
    std::optional<DeviceFileIndex> files;
};

Player playerOf(const Source &source);

// "Rockbox target ipodvideo: up to 2000 entries per playlist (the target's default)".
QString describePlayer(const RockboxPlayer &player);

QList<PlaylistWarning> warningsFor(const QList<Playlist> &playlists, const ConversionOptions &options,
                                   Player &player);
// One line per warning, after a "Warnings:" heading; nothing when there are none.
void printWarnings(const QList<PlaylistWarning> &warnings, CliOutput &output);
// [{playlistName, kind, count, limit}]
QJsonArray warningsJson(const QList<PlaylistWarning> &warnings);

} // namespace kestrune::cli
