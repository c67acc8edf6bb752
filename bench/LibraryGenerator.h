#pragma once

#include <QByteArray>

namespace kestrune::bench {

struct LibraryShape {
    int tracks = 100000;
    int playlists = 1000;
    int entriesPerTrack = 43; // entries in all, in tenths of the track count: 4.3 per track
    quint32 seed = 1;
};

// A database shaped like a large real one: tracks with 0x248-byte headers and six strings of realistic
// lengths (some non-ASCII), playlists of exponentially spread sizes whose entries each carry a type-100
// object, and the playlist section written twice, as the podcast section and as the playlist section.
// The same shape and seed always give the same bytes.
QByteArray generateLibrary(const LibraryShape &shape);

} // namespace kestrune::bench
