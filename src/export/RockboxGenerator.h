#pragma once

#include "ConversionOptions.h"
#include "DeviceFolder.h"
#include "DotFileCleaner.h"
#include "ExportItemResult.h"
#include "RockboxFileItem.h"
#include "core/ExistingRockboxFile.h"
#include "core/Playlist.h"

#include <QList>
#include <QUrl>

#include <atomic>
#include <functional>

namespace kestrune {

// Writes Rockbox playlist files and looks after the device's playlists folder. It keeps no state, so one
// generator may serve any thread.
class RockboxGenerator {
public:
    RockboxGenerator() = default;
    explicit RockboxGenerator(DotFileCleaner cleaner) : m_cleaner(std::move(cleaner)) {}

    // The file text of one playlist. Pure; reads only the resolved tracks, the EXTINF flag and the prefix.
    [[nodiscard]] QString generateM3UContent(const Playlist &playlist,
                                             const ConversionOptions &options) const;

    // A name safe on the player's FAT volume (see sanitizedPlaylistName): each of : / \ | * ? < > "
    // becomes "_", outer white space goes, "" becomes "Playlist"; control characters, a leading "." and
    // Windows device names are made harmless, and the name is kept within Rockbox's path limit.
    [[nodiscard]] static QString sanitizeFilename(const QString &name);

    // The hash that identifies a file's bytes in the record of what Kestrune wrote (hex SHA-256).
    [[nodiscard]] static QByteArray contentDigest(const QByteArray &bytes);

    // The file name an export writes: the (optionally sanitised) name, ".", and "m3u8" or "m3u".
    [[nodiscard]] static QString playlistFilename(const Playlist &playlist, const ConversionOptions &options);
    // The file names of playlists exported together, in their order: playlistFilename(), made distinct
    // where two would be one file on the player's case-blind volume (see distinctBaseNames).
    // `earlierBaseNames` holds, by position, the base name a playlist's file had in an earlier run.
    [[nodiscard]] static QStringList playlistFilenames(const QList<Playlist> &playlists,
                                                       const ConversionOptions &options,
                                                       const QList<std::optional<QString>> &earlierBaseNames = {});

    // Writes the playlist into the folder atomically and durably, replacing a file of the same name.
    // Never throws: every failure is a result with isSuccess false and the reason.
    [[nodiscard]] ExportItemResult exportPlaylist(const Playlist &playlist, const QUrl &playlistsBaseFolder,
                                                  const ConversionOptions &options) const;

    // The playlists of one run, in order, written as exportPlaylist writes one, with two device flushes
    // for the whole run (see PlaylistWriteBatch). A result says success only once its file is on the
    // device. `written` is called with the number of files written so far, after each one.
    using RunProgress = std::function<void(qsizetype written)>;
    using UnchangedProof = std::function<bool(const QString &filename, const QByteArray &digest)>;
    [[nodiscard]] QList<ExportItemResult> exportPlaylists(const QList<Playlist> &playlists,
                                                          const QUrl &playlistsBaseFolder,
                                                          const ConversionOptions &options,
                                                          const RunProgress &written = {}) const;
    // The same into a folder the caller resolved from the root it holds locked. When `stop` turns true
    // the files not yet renamed into place are abandoned, their old files left as they were. `filenames`,
    // when given, are the names playlistFilenames() gave a larger set these playlists were chosen from.
    // `digests`, when given, gets each result's contentDigest() of its bytes (empty when there were none).
    // `knownUnchanged(filename, digest)` may vouch that the file holds those bytes (by the record of what
    // Kestrune wrote), which spares reading it back on a slow device.
    // A file that already holds exactly the bytes is left alone: "unchanged", nothing written.
    [[nodiscard]] QList<ExportItemResult> exportPlaylists(const QList<Playlist> &playlists,
                                                          const DeviceFolder &destination,
                                                          const ConversionOptions &options,
                                                          const RunProgress &written,
                                                          const std::atomic<bool> *stop,
                                                          const QStringList &filenames = {},
                                                          QList<QByteArray> *digests = nullptr,
                                                          const UnchangedProof &knownUnchanged = {}) const;

    [[nodiscard]] QList<RockboxFileItem> listPlaylists(const QUrl &playlistsBaseURL) const;
    [[nodiscard]] QList<ExistingRockboxFile> scanExistingPlaylists(const QUrl &playlistsBaseURL) const;

    // Removes the file, or the folder with its contents, never through a link and never another mount.
    // Throws FileSystemError with the system's text.
    void deleteItem(const QUrl &fileURL) const;
    // The same for a file directly in a folder resolved by the caller.
    void deleteItem(const DeviceFolder &folder, const QString &name) const;

    // Removes dot files below the folder, when it lies on an iPod; returns how many items this pass
    // removed. cleanDotFileTree() tells the whole story.
    int cleanDotFiles(const QUrl &root) const;
    [[nodiscard]] DotFileCleaner::Report cleanDotFileTree(const QUrl &root) const;
    [[nodiscard]] DotFileCleaner::Report cleanDotFileTree(const DeviceFolder &root) const;

private:
    DotFileCleaner m_cleaner;
};

} // namespace kestrune
