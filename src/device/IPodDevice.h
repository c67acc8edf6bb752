#pragma once

#include <QHashFunctions>
#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>

namespace kestrune {

// One usable iPod location: a mounted volume or a folder the user picked (an iPod root or a backup).
struct IPodDevice {
    QUuid id; // new at every inspection, so two scans of one iPod give two ids
    QString name;
    QUrl mountURL;
    QUrl itunesDBURL;  // iPod_Control/iTunes/iTunesDB, or iTunesSD when only that exists
    QUrl playlistsURL; // Playlists at the root; neither checked nor created here
    std::optional<qint64> totalDiskSpace;
    std::optional<qint64> freeDiskSpace;

    bool operator==(const IPodDevice &) const = default;

    // Decimal units ("15.98 GB"), as file browsers show sizes; none when the size is unknown.
    [[nodiscard]] std::optional<QString> formattedFreeSpace() const;
    [[nodiscard]] std::optional<QString> formattedTotalSpace() const;
};

size_t qHash(const IPodDevice &device, size_t seed = 0) noexcept;

// Byte counts in decimal units, shared by every view of sizes.
QString formattedByteCount(qint64 bytes);

} // namespace kestrune
