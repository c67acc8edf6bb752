#pragma once

#include "Playlist.h"
#include "Track.h"

#include <QHash>
#include <QList>

namespace kestrune {

// Fills each playlist's tracks from its stored ids, skipping ids with no track: a large library's in two
// halves of about as many entries each, on two threads.
void resolvePlaylistTracks(QList<Playlist> &playlists, const QHash<quint32, Track> &tracks);

} // namespace kestrune
