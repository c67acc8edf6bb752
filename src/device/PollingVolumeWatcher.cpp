#include "PollingVolumeWatcher.h"

#include <QStorageInfo>

namespace kestrune {

namespace {

QStringList mountedRoots()
{
    QStringList roots;
    for (const QStorageInfo &volume : QStorageInfo::mountedVolumes())
        roots.append(volume.rootPath());
    return roots;
}

} // namespace

PollingVolumeWatcher::PollingVolumeWatcher(QObject *parent) : PollingVolumeWatcher(mountedRoots, 2000, parent)
{
}

PollingVolumeWatcher::PollingVolumeWatcher(Listing listing, int intervalMs, QObject *parent)
    : VolumeWatcher(parent), m_listing(std::move(listing)), m_last(m_listing())
{
    connect(&m_timer, &QTimer::timeout, this, &PollingVolumeWatcher::poll);
    m_timer.start(intervalMs);
}

void PollingVolumeWatcher::poll()
{
    QStringList now = m_listing();
    if (now != m_last) {
        m_last = std::move(now);
        Q_EMIT volumesChanged();
    }
}

} // namespace kestrune
