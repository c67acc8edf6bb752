#pragma once

#include "VolumeWatcher.h"

#include <QFile>
#include <QTimer>

class QSocketNotifier;

namespace kestrune {

// Linux: the kernel flags /proc/self/mountinfo on every change of the mount table (FUSE mounts too, no
// rights needed). Bursts of changes are gathered into one signal.
class MountTableWatcher : public VolumeWatcher {
    Q_OBJECT

public:
    explicit MountTableWatcher(QObject *parent = nullptr);

    [[nodiscard]] bool isWatching() const { return m_notifier != nullptr; }

private:
    void rearm();

    QFile m_mountTable;
    QSocketNotifier *m_notifier = nullptr;
    QTimer m_settle;
};

} // namespace kestrune
