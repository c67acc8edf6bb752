#include "AtomicFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

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

} // namespace kestrune
