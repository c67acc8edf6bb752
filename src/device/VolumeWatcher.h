#pragma once

#include <QObject>

#include <memory>

namespace kestrune {

// Tells when volumes were mounted or unmounted, anywhere. What changed is not reported: listeners rescan.
class VolumeWatcher : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

Q_SIGNALS:
    void volumesChanged();
};

// The watcher of this platform: the mount table on Linux, "/Volumes" on macOS, polling elsewhere.
std::unique_ptr<VolumeWatcher> createSystemVolumeWatcher();

} // namespace kestrune
