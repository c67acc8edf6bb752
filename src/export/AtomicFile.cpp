#include "AtomicFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryFile>

#include <cerrno>
#include <cstdio>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

namespace kestrune {

std::optional<QString> createFolder(const QString &path)
{
    if (QFileInfo(path).isDir())
        return std::nullopt;
    errno = 0;
    if (QDir().mkpath(path))
        return std::nullopt;
    const int error = errno;
    return QStringLiteral("The folder “%1” couldn’t be created: %2")
        .arg(QFileInfo(path).fileName(), error ? qt_error_string(error) : QStringLiteral("unknown error"));
}

#ifdef Q_OS_UNIX

// A temporary file in the target's folder, renamed over the target once every byte is written: the
// target is replaced whole or not at all, and a link in its place is replaced, never written through.
// Nothing is flushed to the device here; flushToDisk() does that once for a whole run.
std::optional<QString> writeFileAtomically(const QString &path, const QByteArray &bytes)
{
    const QFileInfo target(path);
    QTemporaryFile file(target.absolutePath() + QStringLiteral("/.kestrune-XXXXXX"));
    if (!file.open())
        return file.errorString();
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        const QString reason = file.errorString();
        return reason.isEmpty() ? QStringLiteral("The file couldn’t be written completely.") : reason;
    }
    // A temporary file is private to its owner; the playlist gets the permissions it had, or the usual.
    const QFileDevice::Permissions usual =
        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther;
    file.setPermissions(target.exists() && !target.isSymLink() ? target.permissions() : usual);
    file.close();
    if (std::rename(QFile::encodeName(file.fileName()).constData(), QFile::encodeName(path).constData()) != 0)
        return qt_error_string(errno); // the temporary file goes with `file`
    file.setAutoRemove(false);
    return std::nullopt;
}

void flushToDisk(const QString &folder)
{
#ifdef Q_OS_LINUX
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::syncfs(descriptor); // the volume the folder lies on, nothing else
        ::close(descriptor);
        return;
    }
#endif
    Q_UNUSED(folder);
    ::sync();
}

#else

// QSaveFile replaces the target atomically here, and flushes each file itself.
std::optional<QString> writeFileAtomically(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    // A full disk can make write() or the final flush fall short while commit() would still rename the
    // short file over the old one, so every step is checked before committing.
    if (file.write(bytes) != bytes.size() || !file.flush() || file.error() != QFileDevice::NoError) {
        const QString description = file.errorString();
        file.cancelWriting();
        file.commit(); // discards the temporary file
        return description;
    }
    if (!file.commit())
        return file.errorString();
    return std::nullopt;
}

void flushToDisk(const QString &) {}

#endif

} // namespace kestrune
