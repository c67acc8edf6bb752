#include "MountTableWatcher.h"

#include <QSocketNotifier>

namespace kestrune {

MountTableWatcher::MountTableWatcher(QObject *parent)
    : VolumeWatcher(parent), m_mountTable(QStringLiteral("/proc/self/mountinfo"))
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(250);
    connect(&m_settle, &QTimer::timeout, this, &VolumeWatcher::volumesChanged);
    if (!m_mountTable.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return;
    rearm();
    // A change shows as an exceptional condition (POLLPRI) on the open file.
    m_notifier = new QSocketNotifier(m_mountTable.handle(), QSocketNotifier::Exception, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        rearm();
        m_settle.start();
    });
}

void MountTableWatcher::rearm()
{
    // The flag stays raised until the table is read again from its start.
    m_mountTable.seek(0);
    m_mountTable.readAll();
}

} // namespace kestrune
