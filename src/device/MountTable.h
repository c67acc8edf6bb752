#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace kestrune {

// One line of Linux's /proc/self/mountinfo.
struct MountEntry {
    QString source;         // "/dev/sdb1", or a FUSE or pseudo file system's name
    QString mountPoint;
    QString fileSystemType; // "vfat", "ext4", "fuse.sshfs", "tmpfs"...
    QStringList options;    // the mount's and its file system's, together

    bool operator==(const MountEntry &) const = default;
};

// The lines of a mountinfo text; lines that do not parse are left out.
QList<MountEntry> parseMountInfo(const QByteArray &text);
// This process's mount table; empty where there is none (other systems).
QList<MountEntry> systemMountTable();

// The mount a path lies on: the one with the longest mount point that holds the path's real location.
std::optional<MountEntry> mountHolding(const QString &path, const QList<MountEntry> &table);

// A FAT volume mounted without UTF-8 names ("utf8" or "iocharset=utf8"): names with accents or symbols
// are then stored wrongly, and the player shows garbage.
bool storesNamesWithoutUtf8(const MountEntry &mount);

// Whether a mount is a volume a person sees in a file manager: a block device or a FUSE mount under
// /media, /run/media or /mnt, or any removable drive; never a pseudo or system file system (proc, tmpfs,
// overlay, squashfs of a snap, autofs...) nor the system's own disks. `isRemovable` answers for a device
// path such as "/dev/sdb1".
bool isUserVisibleVolume(const MountEntry &mount, const std::function<bool(const QString &)> &isRemovable);
// The same, asking the system (sysfs) whether a device is removable.
bool isUserVisibleVolume(const MountEntry &mount);

} // namespace kestrune
