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

} // namespace kestrune
