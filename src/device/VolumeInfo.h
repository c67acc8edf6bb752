#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace kestrune {

// What the system says about the volume a folder lies on. Every field may be unknown.
struct VolumeInfo {
    std::optional<QString> name; // the volume label
    std::optional<qint64> totalBytes;
    std::optional<qint64> availableBytes;

    bool operator==(const VolumeInfo &) const = default;
};

using VolumeInfoReader = std::function<VolumeInfo(const QString &path)>;

// Reads the label and capacities through QStorageInfo.
VolumeInfo systemVolumeInfo(const QString &path);

} // namespace kestrune
