#pragma once

#include "ConversionOptions.h"
#include "DotFileCleaner.h"
#include "ExportItemResult.h"
#include "RockboxFileItem.h"
#include "core/ExistingRockboxFile.h"
#include "core/Playlist.h"

#include <QList>
#include <QUrl>

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

    // Each of : / \ | * ? < > " becomes one "_", then outer white space goes; "" becomes "Playlist".
    [[nodiscard]] static QString sanitizeFilename(const QString &name);

    // The file name an export writes: the (optionally sanitised) name, ".", and "m3u8" or "m3u".
    [[nodiscard]] static QString playlistFilename(const Playlist &playlist, const ConversionOptions &options);

    // Writes the playlist into the folder atomically, replacing a file of the same name. Never throws:
    // every failure is a result with isSuccess false and the reason.
    [[nodiscard]] ExportItemResult exportPlaylist(const Playlist &playlist, const QUrl &playlistsBaseFolder,
                                                  const ConversionOptions &options) const;

    // Makes a run's files durable on the folder's volume; called once after the last export of a run.
    void flushToDisk(const QUrl &playlistsBaseFolder) const;

    [[nodiscard]] QList<RockboxFileItem> listPlaylists(const QUrl &playlistsBaseURL) const;
    [[nodiscard]] QList<ExistingRockboxFile> scanExistingPlaylists(const QUrl &playlistsBaseURL) const;

    // Removes the file, or the folder with its contents. Throws FileSystemError with the system's text.
    void deleteItem(const QUrl &fileURL) const;

    // Removes dot files below the folder; returns how many items this pass removed.
    int cleanDotFiles(const QUrl &root) const;

private:
    DotFileCleaner m_cleaner;
};

} // namespace kestrune
