#include "DeviceLock.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#endif

namespace kestrune {

DeviceLock::~DeviceLock()
{
#ifdef Q_OS_UNIX
    if (m_folder.isOpen())
        ::flock(m_folder.descriptor(), LOCK_UN);
#endif
}

DeviceLock::DeviceLock(DeviceLock &&other) noexcept : m_folder(std::exchange(other.m_folder, DeviceFolder()))
{
}

DeviceLock &DeviceLock::operator=(DeviceLock &&other) noexcept
{
    if (this != &other) {
        DeviceLock released(std::move(*this));
        m_folder = std::exchange(other.m_folder, DeviceFolder());
    }
    return *this;
}

namespace {

// What the system says of the process holding a lock on the folder's file: its pid, from the lock table.
std::optional<qint64> holderPid(const DeviceFolder &root)
{
#ifdef Q_OS_LINUX
    struct stat status {};
    if (::fstat(root.descriptor(), &status) != 0)
        return std::nullopt;
    QFile locks(QStringLiteral("/proc/locks"));
    if (!locks.open(QIODevice::ReadOnly))
        return std::nullopt;
    // "1: FLOCK  ADVISORY  WRITE 5279 fe:00:10953102 0 EOF"
    const QByteArray file = QByteArray::number(major(status.st_dev), 16).rightJustified(2, '0') + ':' +
                            QByteArray::number(minor(status.st_dev), 16).rightJustified(2, '0') + ':' +
                            QByteArray::number(quint64(status.st_ino));
    for (const QByteArray &line : locks.readAll().split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() >= 6 && fields.at(1) == "FLOCK" && fields.at(5) == file)
            return fields.at(4).toLongLong();
    }
#else
    Q_UNUSED(root);
#endif
    return std::nullopt;
}

// "kestrune-cli convert" from the process's command line.
QString commandOf(qint64 pid)
{
    QFile commandLine(QStringLiteral("/proc/%1/cmdline").arg(pid));
    if (!commandLine.open(QIODevice::ReadOnly))
        return {};
    const QList<QByteArray> arguments = commandLine.readAll().split('\0');
    if (arguments.isEmpty() || arguments.first().isEmpty())
        return {};
    QString command = QFileInfo(QString::fromLocal8Bit(arguments.first())).fileName();
    if (arguments.size() > 1 && !arguments.at(1).isEmpty() && !arguments.at(1).startsWith('-') &&
        !arguments.at(1).contains('/'))
        command += u' ' + QString::fromLocal8Bit(arguments.at(1));
    return command;
}

} // namespace

QString lockHolderOf(const DeviceFolder &root)
{
    const std::optional<qint64> pid = holderPid(root);
    if (!pid)
        return QStringLiteral("another program holds its lock");
    const QString command = commandOf(*pid);
    return QStringLiteral("%1 (pid %2)").arg(command.isEmpty() ? QStringLiteral("another program") : command).arg(*pid);
}

std::variant<DeviceLock, QString> DeviceLock::acquire(const DeviceFolder &root, std::chrono::milliseconds wait,
                                                      const WaitNotice &waiting)
{
    if (!root.isOpen())
        return root.error().value_or(QStringLiteral("The folder could not be opened."));
#ifdef Q_OS_UNIX
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + wait;
    bool told = false;
    for (;;) {
        if (::flock(root.descriptor(), LOCK_EX | LOCK_NB) == 0)
            break;
        if (errno == EINTR)
            continue;
        if (errno != EWOULDBLOCK)
            break; // a file system without locks: nothing to share it with that we could see
        const QString holder = lockHolderOf(root);
        if (Clock::now() >= deadline)
            return QStringLiteral("%1 is busy: %2").arg(root.path(), holder);
        if (!told && waiting) {
            waiting(holder);
            told = true;
        }
        QThread::msleep(50);
    }
#else
    Q_UNUSED(wait);
    Q_UNUSED(waiting);
#endif
    DeviceLock lock;
    lock.m_folder = root;
    return lock;
}

} // namespace kestrune
