#include "AtomicFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryFile>

#include <cstdio>

#include <cerrno>

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

namespace {

// QSaveFile writes through a symbolic link to its target. A link in the playlists folder may point
// anywhere, so it is replaced by the new file instead, as renaming over it does.
std::optional<QString> replaceLink(const QString &path, const QByteArray &bytes)
{
    QTemporaryFile file(QFileInfo(path).absolutePath() + QStringLiteral("/.kestrune-XXXXXX"));
    if (!file.open())
        return file.errorString();
    if (file.write(bytes) != bytes.size() || !file.flush())
        return file.errorString(); // the temporary file goes with `file`
    file.close();
    if (std::rename(QFile::encodeName(file.fileName()).constData(), QFile::encodeName(path).constData()) != 0)
        return qt_error_string(errno);
    file.setAutoRemove(false);
    return std::nullopt;
}

// QSaveFile words some failures itself ("Existing file ... is not writable"); a file made in the same
// folder tells the system's reason, such as a read-only or full volume. Falls back to `fallback`.
QString systemReasonForWriting(const QString &path, const QString &fallback)
{
    QTemporaryFile probe(QFileInfo(path).absolutePath() + QStringLiteral("/.kestrune-XXXXXX"));
    if (probe.open())
        return fallback;
    return probe.errorString();
}

} // namespace

std::optional<QString> writeFileAtomically(const QString &path, const QByteArray &bytes)
{
    if (QFileInfo(path).isSymLink())
        return replaceLink(path, bytes);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return systemReasonForWriting(path, file.errorString());
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

} // namespace kestrune
