#include "DatabaseFile.h"

#include "FileSystemError.h"
#include "ParseError.h"

#include <QFile>
#include <QFileInfo>

namespace kestrune {

namespace {

// Large enough to read at full speed, small enough that a USB 2.0 disk reports progress several times
// a second.
constexpr qint64 chunkSize = 1 << 20;

QString kindOf(const QFileInfo &info)
{
    if (info.isDir())
        return QStringLiteral("una cartella");
    if (!info.exists())
        return QStringLiteral("inesistente");
    return QStringLiteral("un file speciale: FIFO, dispositivo o socket");
}

} // namespace

QByteArray readDatabaseFile(const QString &path, const ReadProgress &progress)
{
    const QFileInfo info(path);
    QFile file(path);
    if (info.exists() && !info.isFile()) {
        throw ParseError::readFailed(
            QStringLiteral("'%1' non è un file normale (%2)").arg(info.fileName(), kindOf(info)));
    }
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        throw FileSystemError{path, QStringLiteral("The file “%1” couldn’t be read: %2")
                                        .arg(info.fileName(), file.errorString())};
    }

    const qint64 size = file.size();
    QByteArray data;
    data.reserve(qsizetype(size));
    QByteArray chunk(qsizetype(chunkSize), Qt::Uninitialized);
    for (;;) {
        const qint64 count = file.read(chunk.data(), chunkSize);
        if (count < 0)
            throw ParseError::readFailed(file.errorString());
        if (count == 0)
            break;
        data.append(chunk.constData(), qsizetype(count));
        if (progress)
            progress(data.size(), std::max(size, qint64(data.size())));
    }
    return data;
}

} // namespace kestrune
