#pragma once

#include "Track.h"

namespace kestrune {

// Asks the processor to start loading the record a track shares, whose reference count a copy changes.
// A hint only: nothing a caller sees depends on it.
inline void prefetchTrack(const Track &track)
{
#if defined(__GNUC__) || defined(__clang__)
    __builtin_prefetch(&track.fields(), 1);
#else
    (void)track;
#endif
}

// The same for the part of the record that holds the path's length and the duration, which checks over
// every entry of a playlist read.
inline void prefetchTrackPathAndDuration(const Track &track)
{
#if defined(__GNUC__) || defined(__clang__)
    __builtin_prefetch(&track.fields().totalTimeMs);
#else
    (void)track;
#endif
}

// Walks a playlist's tracks with the record of the track a few places ahead already asked for: the tracks
// of a large library are scattered over far more memory than the processor's caches hold.
template <typename Visit, typename Prefetch>
void forEachTrackAhead(const QList<Track> &tracks, Prefetch &&prefetch, Visit &&visit)
{
    constexpr qsizetype lookahead = 32; // the visits are short: the wait for memory is long
    for (qsizetype i = 0; i < tracks.size(); ++i) {
        if (i + lookahead < tracks.size())
            prefetch(tracks.at(i + lookahead));
        visit(tracks.at(i));
    }
}

} // namespace kestrune
