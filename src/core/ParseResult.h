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
    // The id of every track item in file order, repeats included: the list that On-The-Go playlists and
    // play counts index into.
    QList<quint32> trackItemIds;
    // The file ends before the length its header or a section declares: an interrupted sync.
    bool looksTruncated = false;
    qint64 claimedSize = 0; // the furthest the header and the sections say the file reaches
    qint64 fileSize = 0;    // what is there
    // A playlist list holds fewer playlists than it declares: damage stopped its reading.
    bool playlistsIncomplete = false;

    bool operator==(const ParseResult &) const = default;

    // The tracks in the order the file first lists them.
    [[nodiscard]] QList<Track> tracksInOrder() const
    {
        QList<Track> ordered;
        ordered.reserve(trackOrder.size());
        for (const quint32 id : trackOrder)
            ordered.append(tracks.value(id));
        return ordered;
    }
};

} // namespace kestrune
