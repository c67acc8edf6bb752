#pragma once

#include "ExistingRockboxFile.h"
#include "Track.h"

#include <QList>
#include <QString>

#include <optional>

namespace kestrune {

// One playlist record of the iPod database, with its tracks resolved by the parser.
struct Playlist {
    QString id; // random UUID string, new on every parse
    quint64 dbId = 0;
    QString name;
    bool isMaster = false;
    bool isSmart = false;
    bool isFolder = false; // a playlist folder; its own entries are those of its children
    quint64 parentDbId = 0; // the folder this playlist sits in, 0 at the top
    bool isOnTheGo = false; // made on the iPod since the last sync; gone from it at the next one
    QList<quint32> trackIds; // as stored: duplicates and dangling ids kept
    QList<Track> tracks;     // resolved, in playlist order
    std::optional<ExistingRockboxFile> existingRockboxFile;

    bool operator==(const Playlist &) const = default;

    [[nodiscard]] bool isAlreadyOnRockbox() const { return existingRockboxFile.has_value(); }
    // Resolved tracks when there are any, else the stored ids.
    [[nodiscard]] int trackCount() const;
    // Sum of each track's whole seconds (each truncated before adding).
    [[nodiscard]] qint64 totalDurationSeconds() const;
    // "12m 05s" below an hour, "1h 00m 00s" from an hour on.
    [[nodiscard]] QString formattedTotalDuration() const;
};

size_t qHash(const Playlist &playlist, size_t seed = 0) noexcept;

} // namespace kestrune
