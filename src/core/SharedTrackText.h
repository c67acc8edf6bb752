#pragma once

#include "Track.h"

namespace kestrune {

// Puts a track's six texts into one allocation that all six share, each at its own offset. Playlists hold
// copies of tracks, hundreds of thousands of them in a large library; a copy then touches one reference
// count on one cache line instead of six scattered ones. The strings behave as any others: a change
// detaches the changed one.
void shareOneAllocation(Track &track);

} // namespace kestrune
