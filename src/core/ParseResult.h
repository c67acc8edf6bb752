#pragma once

#include "Playlist.h"
#include "Track.h"

#include <QHash>
#include <QList>

namespace kestrune {

struct ParseResult {
    QHash<quint32, Track> tracks;
    QList<Playlist> playlists; // database order
    // The distinct track ids in the order the file first lists them, for callers that show every track.
    QList<quint32> trackOrder;

    bool operator==(const ParseResult &) const = default;
};

} // namespace kestrune
