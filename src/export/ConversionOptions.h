#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace kestrune {

// How playlists are written. A default-made value is the configuration every launch starts with.
struct ConversionOptions {
    std::optional<QUrl>
        destinationFolder;        // chosen by the user; the caller resolves the folder, never the generator
    bool extendedM3U = true;      // "#EXTM3U" header and an "#EXTINF:" line per track
    bool useM3U8Extension = true; // ".m3u8", else ".m3u"; the content is UTF-8 either way
    QString customPathPrefix;     // put in front of every track path; empty means none
    bool sanitizeFilenames = true;
    bool includeMasterPlaylist = false; // carried but read by nobody: only the ticks decide what is exported
    bool cleanDotFiles = true;          // remove macOS dot files after a run

    bool operator==(const ConversionOptions &) const = default;
};

} // namespace kestrune
