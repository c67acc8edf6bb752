#pragma once

#include "ConversionOptions.h"
#include "DeviceFileIndex.h"
#include "core/Playlist.h"

#include <QList>
#include <QString>

namespace kestrune {

// Rockbox cannot open a path of more than 259 bytes of UTF-8 (its MAX_PATH is 260 with the NUL).
constexpr int playerPathLimitBytes = 259;

// Something the player will silently not play in an exported playlist.
struct PlaylistWarning {
    enum class Kind {
        overLimit,    // more entries than the player keeps: it drops the ones past `limit`
        longPaths,    // track lines longer than the player can open
        longFileName, // the playlist's own path on the player is too long
        missingFiles, // tracks whose file is not on the device
    };

    QString playlistName;
    Kind kind = Kind::overLimit;
    int count = 0; // entries (overLimit: all of them), lines, or files
    int limit = 0; // overLimit: the player's limit; paths: playerPathLimitBytes; missingFiles: 0

    bool operator==(const PlaylistWarning &) const = default;
};

// "overLimit", "longPaths", "longFileName", "missingFiles".
QString warningKindName(PlaylistWarning::Kind kind);

// Finds the warnings of playlists written with these options onto a player keeping `playlistLimit`
// entries. `deviceFiles`, when given, is asked whether each track's file exists, once however many
// playlists hold the track (a large library's playlists hold half a million entries of a hundred thousand
// tracks); so the playlists checked must stay alive as long as the checker.
class PlaylistChecker {
public:
    PlaylistChecker(ConversionOptions options, int playlistLimit, DeviceFileIndex *deviceFiles = nullptr);

    [[nodiscard]] QList<PlaylistWarning> warnings(const Playlist &playlist);

private:
    struct Findings {
        bool longPath = false;
        bool missing = false;
    };
    Findings findingsFor(const Track &track);
    [[nodiscard]] bool hasLongPath(const Track &track) const;

    ConversionOptions m_options;
    qsizetype m_prefixBytes = 0;
    int m_playlistLimit = 0;
    DeviceFileIndex *m_deviceFiles = nullptr;
    QHash<const TrackFields *, bool> m_missing; // by the record that copies of a track share
};

// The playlist split so that no part holds more than `limit` entries: "Name (1 of 3)", "Name (2 of 3)"...;
// a playlist within the limit comes back as it is.
QList<Playlist> splitToLimit(const Playlist &playlist, int limit);

} // namespace kestrune
