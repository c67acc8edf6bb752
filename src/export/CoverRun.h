#pragma once

#include "WriteScope.h"
#include "core/ArtworkLibrary.h"
#include "core/Track.h"

#include <QList>
#include <QSize>
#include <QString>

#include <atomic>
#include <functional>
#include <optional>

namespace kestrune {

struct CoverRunRequest {
    QList<Track> tracks; // the library's, in database order: ties between covers go to the first
    std::optional<QSize> extraSize; // also the ".WxH" variant Rockbox tries first at that size
    bool mirror = false;            // remove covers Kestrune wrote that no track needs any more
    bool force = false;             // replace files Kestrune did not write, or that were edited since
    bool dryRun = false;
};

// What became of one cover file.
struct CoverResult {
    enum class Outcome { written, unchanged, removed, kept, failed };
    QString fileName; // in .rockbox/albumart
    QSize size;       // of the picture written; empty for a removed or kept file
    int trackCount = 0;
    Outcome outcome = Outcome::written;
    QString reason; // why kept or removed, or why it failed

    bool operator==(const CoverResult &) const = default;
    // "written", "unchanged", "removed", "kept" or "failed".
    [[nodiscard]] QString status() const;
};

struct CoverRunReport {
    // One line when the step does not apply (no .rockbox folder, no artwork database, no known format):
    // nothing is written and that is no failure.
    std::optional<QString> notApplicable;
    std::optional<QString> failure; // the step as a whole failed (a damaged artwork database, no folder)
    QList<CoverResult> results;     // by name, in database order of their first track; then removals
    // Tracks with a cover for which Rockbox would never find a file, and why.
    qsizetype skippedNoAlbumOrArtist = 0;
    qsizetype skippedTooLong = 0;
    qsizetype skippedRefusedCharacter = 0;
    std::optional<QString> recordFailure;
    bool stopped = false;

    [[nodiscard]] qsizetype count(CoverResult::Outcome outcome) const;
    [[nodiscard]] bool failed() const { return failure || recordFailure || count(CoverResult::Outcome::failed) > 0; }
};

// Writes one cover per name Rockbox looks up into the device's .rockbox/albumart (made when missing),
// with the durable batch of the playlists, below a root the caller holds locked. The picture of a name is
// the one most of its tracks carry, ties going to the first track. `progress(done, total)` counts covers
// prepared; `stop` abandons what is not yet in place.
using CoverProgress = std::function<void(qsizetype done, qsizetype total)>;
[[nodiscard]] CoverRunReport runCovers(const DeviceFolder &deviceRoot, const ArtworkLibrary &artwork,
                                       const CoverRunRequest &request, const CoverProgress &progress = {},
                                       const std::atomic<bool> *stop = nullptr);

} // namespace kestrune
