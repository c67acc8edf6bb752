#include "MountTableWatcher.h"
#include "PollingVolumeWatcher.h"

#include <QDir>
#include <QFileSystemWatcher>

namespace kestrune {

namespace {

// macOS mounts every volume as an entry of "/Volumes", so watching that folder sees each mount.
class VolumesFolderWatcher : public VolumeWatcher {
public:
    VolumesFolderWatcher()
    {
        m_watcher.addPath(QStringLiteral("/Volumes"));
        connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &VolumeWatcher::volumesChanged);
    }

private:
    QFileSystemWatcher m_watcher;
};

} // namespace

std::unique_ptr<VolumeWatcher> createSystemVolumeWatcher()
{
#if defined(Q_OS_MACOS)
    return std::make_unique<VolumesFolderWatcher>();
#elif defined(Q_OS_LINUX)
    auto watcher = std::make_unique<MountTableWatcher>();
    if (watcher->isWatching())
        return watcher;
    return std::make_unique<PollingVolumeWatcher>();
#else
    return std::make_unique<PollingVolumeWatcher>();
#endif
}

} // namespace kestrune
