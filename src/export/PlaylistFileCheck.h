#pragma once

#include "DeviceFileIndex.h"

#include <QString>

namespace kestrune {

// How a playlist file already on the device will play.
struct PlaylistFileCheck {
    int entries = 0;    // track lines
    int unresolved = 0; // entries whose file the player will not find
    int tooLong = 0;    // entries longer than the player can open
    int pastLimit = 0;  // entries the player drops as past its limit

    bool operator==(const PlaylistFileCheck &) const = default;
    [[nodiscard]] bool playsWhole() const { return unresolved == 0 && tooLong == 0 && pastLimit == 0; }
};

// Reads the file at `devicePath` (relative to the device's root, e.g. "Playlists/Rock.m3u8") as the player
// does: comment lines skipped, "\" read as "/", a drive letter standing for the device, a relative path
// taken from the playlist's folder, names matched case-blind. ".m3u" files are UTF-8 when they start with
// a byte-order mark or decode as UTF-8, else Latin-1.
PlaylistFileCheck checkPlaylistFile(DeviceFileIndex &deviceFiles, const QString &deviceRoot,
                                    const QString &devicePath, int playlistLimit);

} // namespace kestrune
