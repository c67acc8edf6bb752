#include "DeviceFolder.h"

#include "SystemErrorText.h"

#include <QDir>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace kestrune {

QString linkRefusedMessage(const QString &path)
{
    return QStringLiteral("“%1” is a symbolic link; Kestrune does not write or remove anything through a link "
                          "on the device.")
        .arg(path);
}

DeviceFolder DeviceFolder::failed(const QString &path, const QString &reason)
{
    DeviceFolder folder;
    folder.m_path = path;
    folder.m_error = reason;
    return folder;
}

namespace {

qint64 coarseModificationTime(qint64 milliseconds)
{
    constexpr qint64 fatStep = 2000;
    return milliseconds - ((milliseconds % fatStep) + fatStep) % fatStep;
}

// The components of a relative path; none when one of them would leave the folder.
std::optional<QStringList> componentsOf(const QString &relativePath)
{
    QStringList components;
    for (const QString &component : relativePath.split(u'/', Qt::SkipEmptyParts)) {
        if (component == QLatin1StringView(".."))
            return std::nullopt;
        if (component != QLatin1StringView("."))
            components.append(component);
    }
    return components;
}

QString cannotOpen(const QString &path, const QString &reason)
{
    return QStringLiteral("The folder “%1” couldn’t be opened: %2").arg(path, reason);
}

} // namespace

#ifdef Q_OS_UNIX

struct DeviceFolder::Handle {
    int descriptor;
    explicit Handle(int fd) : descriptor(fd) {}
    ~Handle() { ::close(descriptor); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
};

int DeviceFolder::descriptor() const
{
    return m_handle ? m_handle->descriptor : -1;
}

DeviceFolder DeviceFolder::open(const QString &path)
{
    const QString clean = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    const int fd = ::open(QFile::encodeName(clean).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return failed(clean, cannotOpen(clean, describeSystemError(errno)));
    DeviceFolder folder;
    folder.m_handle = std::make_shared<Handle>(fd);
    folder.m_path = clean;
    return folder;
}

DeviceFolder DeviceFolder::openFolder(const QString &relativePath, bool createLast) const
{
    if (!isOpen())
        return *this;
    const std::optional<QStringList> components = componentsOf(relativePath);
    const QString target = relativePath.isEmpty() ? m_path : m_path + u'/' + relativePath;
    if (!components)
        return failed(target, QStringLiteral("“%1” leads out of “%2”.").arg(relativePath, m_path));
    DeviceFolder current = *this;
    for (qsizetype i = 0; i < components->size(); ++i) {
        const QByteArray name = QFile::encodeName(components->at(i));
        const QString path = current.m_path + u'/' + components->at(i);
        const bool last = i + 1 == components->size();
        constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
        int fd = ::openat(current.descriptor(), name.constData(), flags);
        if (fd < 0 && errno == ENOENT && last && createLast) {
            if (::mkdirat(current.descriptor(), name.constData(), 0777) != 0 && errno != EEXIST)
                return failed(path, QStringLiteral("The folder “%1” couldn’t be created: %2")
                                        .arg(path, describeSystemError(errno)));
            fd = ::openat(current.descriptor(), name.constData(), flags);
        }
        if (fd < 0) {
            const int error = errno;
            if (current.entryKind(components->at(i)) == EntryKind::link)
                return failed(path, linkRefusedMessage(path));
            return failed(path, cannotOpen(path, describeSystemError(error)));
        }
        DeviceFolder next;
        next.m_handle = std::make_shared<Handle>(fd);
        next.m_path = path;
        current = std::move(next);
    }
    return current;
}

DeviceFolder::EntryKind DeviceFolder::entryKind(const QString &name) const
{
    struct stat status {};
    if (::fstatat(descriptor(), QFile::encodeName(name).constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT || errno == ENOTDIR ? EntryKind::missing : EntryKind::unreadable;
    if (S_ISLNK(status.st_mode))
        return EntryKind::link;
    if (S_ISDIR(status.st_mode))
        return EntryKind::folder;
    return S_ISREG(status.st_mode) ? EntryKind::file : EntryKind::other;
}

namespace {

std::optional<qint64> regularFileSize(int folder, const QByteArray &name)
{
    struct stat status {};
    if (::fstatat(folder, name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return qint64(status.st_size);
}

} // namespace

std::optional<QByteArray> DeviceFolder::readFile(const QString &name, qint64 maximumBytes) const
{
    const QByteArray encoded = QFile::encodeName(name);
    const std::optional<qint64> size = isOpen() ? regularFileSize(descriptor(), encoded) : std::nullopt;
    if (!size || *size > maximumBytes)
        return std::nullopt;
    const int fd = ::openat(descriptor(), encoded.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    QByteArray bytes(*size, Qt::Uninitialized);
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::read(fd, bytes.data() + done, size_t(bytes.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        done += count;
    }
    ::close(fd);
    if (done != bytes.size())
        return std::nullopt;
    return bytes;
}

std::optional<DeviceFolder::Stamp> DeviceFolder::stampOf(const QString &name) const
{
    struct stat status {};
    if (!isOpen() || ::fstatat(descriptor(), QFile::encodeName(name).constData(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
        !S_ISREG(status.st_mode))
        return std::nullopt;
    return Stamp{qint64(status.st_size), coarseModificationTime(qint64(status.st_mtim.tv_sec) * 1000 + status.st_mtim.tv_nsec / 1000000)};
}

std::optional<QString> DeviceFolder::flush() const
{
    if (!isOpen())
        return m_error;
    if (::fsync(descriptor()) != 0 && errno != EINVAL)
        return describeSystemError(errno);
#ifdef Q_OS_LINUX
    if (::syncfs(descriptor()) != 0)
        return describeSystemError(errno);
#endif
    return std::nullopt;
}

bool DeviceFolder::holdsExactly(const QString &name, const QByteArray &bytes) const
{
    if (!isOpen() || regularFileSize(descriptor(), QFile::encodeName(name)) != qint64(bytes.size()))
        return false;
    return readFile(name, bytes.size()) == bytes;
}

std::optional<QString> DeviceFolder::removeFile(const QString &name) const
{
    if (!isOpen())
        return m_error;
    if (::unlinkat(descriptor(), QFile::encodeName(name).constData(), 0) == 0)
        return std::nullopt;
    return describeSystemError(errno);
}

#else

// Elsewhere the folder is kept by its path, and each component is checked for a link as it is reached.
struct DeviceFolder::Handle {};

int DeviceFolder::descriptor() const
{
    return -1;
}

DeviceFolder DeviceFolder::open(const QString &path)
{
    const QString clean = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    if (!QFileInfo(clean).isDir())
        return failed(clean, cannotOpen(clean, QStringLiteral("it is not a folder.")));
    DeviceFolder folder;
    folder.m_handle = std::make_shared<Handle>();
    folder.m_path = clean;
    return folder;
}

DeviceFolder DeviceFolder::openFolder(const QString &relativePath, bool createLast) const
{
    if (!isOpen())
        return *this;
    const std::optional<QStringList> components = componentsOf(relativePath);
    if (!components)
        return failed(m_path, QStringLiteral("“%1” leads out of “%2”.").arg(relativePath, m_path));
    QString path = m_path;
    for (qsizetype i = 0; i < components->size(); ++i) {
        path += u'/' + components->at(i);
        const QFileInfo info(path);
        if (info.isSymLink() || info.isShortcut() || info.isJunction())
            return failed(path, linkRefusedMessage(path));
        if (!info.exists() && i + 1 == components->size() && createLast && QDir().mkdir(path))
            continue;
        if (!QFileInfo(path).isDir())
            return failed(path, cannotOpen(path, QStringLiteral("it is not a folder.")));
    }
    DeviceFolder folder;
    folder.m_handle = m_handle;
    folder.m_path = path;
    return folder;
}

std::optional<QByteArray> DeviceFolder::readFile(const QString &name, qint64 maximumBytes) const
{
    if (entryKind(name) != EntryKind::file)
        return std::nullopt;
    QFile file(m_path + u'/' + name);
    if (file.size() > maximumBytes || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

std::optional<QString> DeviceFolder::flush() const
{
    return m_error;
}

std::optional<DeviceFolder::Stamp> DeviceFolder::stampOf(const QString &name) const
{
    const QFileInfo info(m_path + u'/' + name);
    if (entryKind(name) != EntryKind::file)
        return std::nullopt;
    return Stamp{info.size(), coarseModificationTime(info.lastModified().toMSecsSinceEpoch())};
}

bool DeviceFolder::holdsExactly(const QString &name, const QByteArray &bytes) const
{
    return QFileInfo(m_path + u'/' + name).size() == bytes.size() && readFile(name, bytes.size()) == bytes;
}

std::optional<QString> DeviceFolder::removeFile(const QString &name) const
{
    if (!isOpen())
        return m_error;
    QFile file(m_path + u'/' + name);
    return file.remove() ? std::nullopt : std::optional(file.errorString());
}

DeviceFolder::EntryKind DeviceFolder::entryKind(const QString &name) const
{
    const QFileInfo info(m_path + u'/' + name);
    if (info.isSymLink() || info.isShortcut() || info.isJunction())
        return EntryKind::link;
    if (!info.exists())
        return EntryKind::missing;
    if (info.isDir())
        return EntryKind::folder;
    return info.isFile() ? EntryKind::file : EntryKind::other;
}

#endif

} // namespace kestrune
