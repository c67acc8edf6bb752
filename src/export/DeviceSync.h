#pragma once

#include "CoverRun.h"
#include "PlaylistRun.h"
#include "StatisticsChangelog.h"
#include "core/PlayCounts.h"

#include <optional>

namespace kestrune {

// The statistics step: the plays, ratings and last plays the iPod counted, written where Rockbox imports
// them. A changelog Kestrune wrote (by the record) is replaced; one the player exported is left.
struct StatisticsStepReport {
    enum class Outcome {
        notApplicable,  // no .rockbox folder: Rockbox is not installed
        nothingToBring, // no track has plays or a rating
        written,
        unchanged,      // the changelog there already says exactly this
        playersOwnLeft, // a changelog Kestrune did not write is there: left, and said
        failed,
    };
    Outcome outcome = Outcome::notApplicable;
    QString path; // the changelog's
    StatisticsChangelog changelog;
    std::optional<QString> failure;

    [[nodiscard]] bool isFailure() const { return outcome == Outcome::failed; }
};

// Runs the statistics step below a device root the caller holds locked.
[[nodiscard]] StatisticsStepReport runStatisticsStep(const DeviceFolder &deviceRoot,
                                                     const LibraryStatistics &statistics, bool dryRun);

// What a user runs after each iTunes sync, in one place for the command line and the window: the
// playlists (with mirror, when asked), then the statistics, then the covers, each step only when the one
// before was not stopped. The caller holds the device's lock on scope.root.
struct SyncRequest {
    PlaylistRunRequest playlists;
    std::optional<LibraryStatistics> statistics; // none: the step is not part of this run
    // The covers, from the iPod's artwork; none: the step is not part of this run.
    struct Covers {
        const ArtworkLibrary *artwork = nullptr;
        CoverRunRequest request;
    };
    std::optional<Covers> covers;
};

struct SyncReport {
    PlaylistRunReport playlists;
    std::optional<StatisticsStepReport> statistics;
    std::optional<CoverRunReport> covers;
    bool stopped = false;
};

[[nodiscard]] SyncReport runSync(const WriteScope &scope, const SyncRequest &request, const RockboxGenerator &generator,
                                 const RockboxGenerator::RunProgress &written = {},
                                 const std::atomic<bool> *stop = nullptr, const CoverProgress &coverProgress = {});

} // namespace kestrune
