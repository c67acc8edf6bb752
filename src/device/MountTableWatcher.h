#pragma once

#include "MountTable.h"
#include "VolumeWatcher.h"

#include <QFile>
#include <QTimer>

#include <functional>

class QSocketNotifier;

namespace kestrune {

// Linux: the kernel flags /proc/self/mountinfo on every change of the mount table (FUSE mounts too, no
// rights needed). Only a change of the volumes a person sees is reported: a snap, a container's tmpfs or
// a desktop portal mounting leaves the window as it was. Bursts of changes are gathered into one signal.
class MountTableWatcher : public VolumeWatcher {
    Q_OBJECT

public:
    using VolumeFilter = std::function<bool(const MountEntry &)>;

    explicit MountTableWatcher(VolumeFilter isVolume = [](const MountEntry &mount) {
        return isUserVisibleVolume(mount);
    },
                               QObject *parent = nullptr);

    [[nodiscard]] bool isWatching() const { return m_notifier != nullptr; }

private:
    // Reads the table (which also clears the kernel's flag) and gives the volumes it holds now.
    QList<MountEntry> readVolumes();
    void compare();

    VolumeFilter m_isVolume;
    QFile m_mountTable;
    QSocketNotifier *m_notifier = nullptr;
    QTimer m_settle;
    QList<MountEntry> m_volumes;
};

} // namespace kestrune
