#pragma once

#include "BinaryReader.h"
#include "ParseBudget.h"
#include "Track.h"

#include <QList>

#include <limits>

namespace kestrune {

// What a walk through a track list's items ("mhit") found.
struct TrackItemWalk {
    QList<Track> tracks;
    QList<quint32> stepOfTrack; // the step that found each track, when asked for
    quint32 steps = 0;          // each reads one item, or moves one byte past something that is none
    bool reachedStop = false;   // the cursor came to `stopAt` at the start of a step
};

constexpr qsizetype noStop = -1;

// Walks up to `maxSteps` steps through track items from the cursor. Ends early at damage, at the section's
// end, when the budget is spent, or with the cursor on `stopAt` at the start of a step.
void walkTrackItems(BinaryReader &reader, qsizetype sectionEnd, quint32 maxSteps, qsizetype stopAt,
                    ParseBudget &budget, TrackItemWalk &walk, bool recordSteps = false);

// A place from which a second reader can walk the items of [from, sectionEnd): the first offset at or after
// `from`, within a few kilobytes, that holds an item whose lengths lead on to two more (or to the section's
// end). Only a guess: the walk from the list's start decides whether it is a real item boundary. -1 when
// there is none.
qsizetype findItemBoundary(BinaryReader &reader, qsizetype from, qsizetype sectionEnd);

} // namespace kestrune
