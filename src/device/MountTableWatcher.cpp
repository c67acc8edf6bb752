#include "MountTableWatcher.h"

#include <QSocketNotifier>

namespace kestrune {

MountTableWatcher::MountTableWatcher(VolumeFilter isVolume, QObject *parent)
    : VolumeWatcher(parent), m_isVolume(std::move(isVolume)),
      m_mountTable(QStringLiteral("/proc/self/mountinfo"))
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(250);
    connect(&m_settle, &QTimer::timeout, this, &MountTableWatcher::compare);
    if (!m_mountTable.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return;
    m_volumes = readVolumes();
    // A change shows as an exceptional condition (POLLPRI) on the open file.
    m_notifier = new QSocketNotifier(m_mountTable.handle(), QSocketNotifier::Exception, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        readVolumes(); // the flag stays raised until the table is read again from its start
        m_settle.start();
    });
}

QList<MountEntry> MountTableWatcher::readVolumes()
{
    m_mountTable.seek(0);
    QList<MountEntry> volumes = parseMountInfo(m_mountTable.readAll());
    volumes.removeIf([this](const MountEntry &mount) { return !m_isVolume(mount); });
    return volumes;
}

void MountTableWatcher::compare()
{
    QList<MountEntry> volumes = readVolumes();
    if (volumes == m_volumes)
        return;
    m_volumes = std::move(volumes);
    Q_EMIT volumesChanged();
}

} // namespace kestrune
