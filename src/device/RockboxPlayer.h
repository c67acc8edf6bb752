#pragma once

#include <QString>

#include <optional>

namespace kestrune {

// What the Rockbox build on a device will do with the playlists written for it, read from its
// ".rockbox" folder. Rockbox keeps only the first playlistLimit entries of a playlist it loads.
struct RockboxPlayer {
    enum class LimitSource {
        userSetting,   // "max files in playlist" in .rockbox/config.cfg
        targetDefault, // the default of the target named in .rockbox/rockbox-info.txt
        assumed,       // target unknown or absent: the smaller default, to be safe
    };

    std::optional<QString> target; // "ipodvideo", "ipod6g"...
    int playlistLimit = 2000;
    LimitSource limitSource = LimitSource::assumed;

    bool operator==(const RockboxPlayer &) const = default;
};

// Reads `.rockbox/rockbox-info.txt` (its "Target:" line) and `.rockbox/config.cfg` (its
// "max files in playlist:" setting) below the device's root; what is missing falls back as described.
RockboxPlayer readRockboxPlayer(const QString &deviceRoot);

// The default limit of a target: 10000 on the nano 2G and the Classic, 2000 on the PortalPlayer iPods;
// none for a target this table does not know.
std::optional<int> defaultPlaylistLimit(const QString &target);

} // namespace kestrune
