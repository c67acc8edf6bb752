#pragma once

#include "ConversionOptions.h"
#include "DotFileCleaner.h"
#include "ExportItemResult.h"
#include "RockboxGenerator.h"
#include "WriteScope.h"
#include "core/Playlist.h"

#include <QList>
#include <QSet>

#include <atomic>
#include <optional>

namespace kestrune {

// One playlist run on a device, as the command line and the window both make it: the stale temporary
// files of a dead run swept up, every playlist written unless its file already holds its bytes, then
// (mirror) the files Kestrune wrote for playlists no longer exported removed, the record of what
// Kestrune wrote brought up to date, and the dot files cleaned.
struct PlaylistRunRequest {
    QList<Playlist> playlists; // to export, in database order
    ConversionOptions options;
    // A database that looks truncated: existing files are kept back (with this reason) instead of being
    // replaced by what may be shorter playlists. Empty: they are replaced.
    QString keepExistingFilesReason;
    bool mirror = false;
    // The database looks truncated or its reading stopped on damage: its missing playlists would look
    // deleted, so mirror removes nothing.
    bool libraryIncomplete = false;
    // Every playlist id in the database, each with how often it occurs: an id of 0 or one that repeats
    // never tells a rename.
    QHash<quint64, int> libraryIds;
    // When only some playlists were chosen by name, only the old files of these ids may go.
    std::optional<QSet<quint64>> mirrorOnlyIds;
    // The file names a user confirmed for removal after a dry run: nothing else goes.
    std::optional<QSet<QString>> mirrorConfirmed;
    bool dryRun = false;
};

struct PlaylistRunReport {
    QList<ExportItemResult> results; // the playlists in order, then each file mirror removed or kept
    QStringList staleTemporaryFiles;
    DotFileCleaner::Report cleaning;
    std::optional<QString> mirrorRefusal; // why mirror removed nothing
    std::optional<QString> recordFailure; // the record could not be written (the files are)
    bool stopped = false;

    [[nodiscard]] qsizetype failures() const;
};

// Whether an id tells one playlist from every other: not 0, and not repeated in the database.
[[nodiscard]] bool isRenameKey(quint64 id, const QHash<quint64, int> &libraryIds);

// Runs the request in the scope's destination. The caller holds the device's lock (DeviceLock) on
// scope.root. `written` counts the playlists done so far; `stop` abandons what is not yet in place.
[[nodiscard]] PlaylistRunReport runPlaylists(const WriteScope &scope, const PlaylistRunRequest &request,
                                             const RockboxGenerator &generator,
                                             const RockboxGenerator::RunProgress &written = {},
                                             const std::atomic<bool> *stop = nullptr);

} // namespace kestrune
