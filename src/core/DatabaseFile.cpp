#include "DatabaseFile.h"

#include "FileSystemError.h"
#include "ParseError.h"

#include <QFileInfo>

#include <algorithm>

#ifdef Q_OS_LINUX
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace kestrune {

namespace {

QString kindOf(const QFileInfo &info)
{
    if (info.isDir())
        return QStringLiteral("una cartella");
    return QStringLiteral("un file speciale: FIFO, dispositivo o socket");
}

} // namespace

DatabaseFile::DatabaseFile(const QString &path, ReadProgress progress) : m_file(path), m_progress(std::move(progress))
{
    const QFileInfo info(path);
    if (info.exists() && !info.isFile()) {
        throw ParseError::readFailed(
            QStringLiteral("'%1' non è un file normale (%2)").arg(info.fileName(), kindOf(info)));
    }
    if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        throw FileSystemError{path, QStringLiteral("The file “%1” couldn’t be read: %2")
                                        .arg(info.fileName(), m_file.errorString())};
    }
    // Untouched, the buffer's pages take no memory: only the parts loaded do.
    m_bytes = QByteArray(qsizetype(m_file.size()), Qt::Uninitialized);
    m_loaded.assign(size_t((m_bytes.size() >> chunkShift) + 1), false);
}

void DatabaseFile::loadChunk(qsizetype chunk)
{
    const qint64 start = qint64(chunk) << chunkShift;
    const qint64 length = std::min<qint64>(qint64(1) << chunkShift, m_bytes.size() - start);
    char *at = m_bytes.data() + start;
    qint64 done = 0;
    if (!m_file.seek(start))
        throw ParseError::readFailed(m_file.errorString());
    while (done < length) {
        const qint64 count = m_file.read(at + done, length - done);
        if (count < 0)
            throw ParseError::readFailed(m_file.errorString());
        if (count == 0)
            throw ParseError::readFailed(QStringLiteral("il file è cambiato durante la lettura"));
        done += count;
    }
    m_loaded[size_t(chunk)] = true;
    m_bytesRead += length;
    const int percent = int(m_bytesRead * 100 / m_bytes.size()); // a chunk was read: the file is not empty
    if (m_progress && percent > m_percentTold)
        m_progress(m_percentTold = percent);
}

void DatabaseFile::release(qsizetype offset, qsizetype end)
{
    end = std::min(end, m_bytes.size());
    const qsizetype first = (offset + (qsizetype(1) << chunkShift) - 1) >> chunkShift;
    const qsizetype last = end == m_bytes.size() ? qsizetype(m_loaded.size()) : end >> chunkShift; // exclusive
    if (first >= last)
        return;
#ifdef Q_OS_LINUX
    // The buffer is never written again where it was released, so its pages can simply go: they read as
    // zeros until a load fills them again.
    const auto page = quintptr(::sysconf(_SC_PAGESIZE));
    const auto begin = (quintptr(m_bytes.data() + (first << chunkShift)) + page - 1) & ~(page - 1);
    const auto stop = quintptr(m_bytes.data() + std::min(last << chunkShift, m_bytes.size())) & ~(page - 1);
    if (begin < stop)
        ::madvise(reinterpret_cast<void *>(begin), stop - begin, MADV_DONTNEED);
#endif
    std::fill(m_loaded.begin() + first, m_loaded.begin() + last, false);
}

void DatabaseFile::finish()
{
    if (m_progress && m_percentTold < 100)
        m_progress(m_percentTold = 100);
}

} // namespace kestrune
