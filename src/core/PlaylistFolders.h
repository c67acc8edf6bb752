#pragma once

#include "Playlist.h"

#include <QList>
#include <QStringList>

namespace kestrune {

// Playlist folders (iTunes 7 and later): a folder playlist, and children naming it as their parent.

// The folders each playlist sits in, outermost first ("Rock", "Seventies"); empty at the top. A parent id
// that names no folder, or a loop of parents, ends the path where it goes wrong.
QList<QStringList> folderPaths(const QList<Playlist> &playlists);

// For a player whose playlists menu shows no sub-folders: folder playlists left out, and each playlist
// in a folder named after its folders, "Rock - Seventies - Child".
QList<Playlist> flattenedFolders(const QList<Playlist> &playlists);

} // namespace kestrune
