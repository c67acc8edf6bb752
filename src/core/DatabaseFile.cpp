#include "DatabaseFile.h"

#include "FileSystemError.h"
#include "ParseError.h"

#include <QFileInfo>

#include <algorithm>
#include <cstdlib>

#ifdef Q_OS_LINUX
#include <sys/mman.h>
#endif
#ifdef Q_OS_UNIX
#include <cerrno>
#include <cstring>
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

DatabaseFile::DatabaseFile(const QString &path, ReadProgress progress)
    : m_path(path), m_file(std::make_shared<QFile>(path)), m_bytesRead(std::make_shared<std::atomic<qint64>>(0)),
      m_progress(std::move(progress))
{
    const QFileInfo info(path);
    if (info.exists() && !info.isFile()) {
        throw ParseError::readFailed(
            QStringLiteral("'%1' non è un file normale (%2)").arg(info.fileName(), kindOf(info)));
    }
    if (!m_file->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        throw FileSystemError{path, QStringLiteral("The file “%1” couldn’t be read: %2")
                                        .arg(info.fileName(), m_file->errorString())};
    }
    allocateBuffer(qsizetype(m_file->size()));
}

DatabaseFile::DatabaseFile(DatabaseFile &sibling) : m_path(sibling.m_path), m_bytesRead(sibling.m_bytesRead)
{
#ifdef Q_OS_UNIX
    m_file = sibling.m_file; // read with pread, which leaves the shared file position alone
#else
    m_file = std::make_shared<QFile>(m_path);
    if (!m_file->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw ParseError::readFailed(m_file->errorString());
#endif
    allocateBuffer(sibling.m_bytes.size());
}

void DatabaseFile::allocateBuffer(qsizetype size)
{
    m_loaded.assign(size_t((size >> chunkShift) + 1), false);
    m_bufferSize = qsizetype(m_loaded.size()) << chunkShift;
    // Untouched, the buffer's pages take no memory: only the parts loaded do.
#ifdef Q_OS_LINUX
    void *buffer = ::mmap(nullptr, size_t(m_bufferSize), PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    m_buffer = buffer == MAP_FAILED ? nullptr : static_cast<char *>(buffer);
#else
    m_buffer = static_cast<char *>(std::malloc(size_t(m_bufferSize)));
#endif
    if (!m_buffer)
        throw ParseError::readFailed(QStringLiteral("memoria insufficiente per il file"));
    m_bytes = QByteArray::fromRawData(m_buffer, size);
}

DatabaseFile::~DatabaseFile()
{
#ifdef Q_OS_LINUX
    ::munmap(m_buffer, size_t(m_bufferSize));
#else
    std::free(m_buffer);
#endif
}

void DatabaseFile::readAt(qint64 offset, char *into, qint64 length)
{
    qint64 done = 0;
#ifdef Q_OS_UNIX
    while (done < length) {
        const ssize_t count = ::pread(m_file->handle(), into + done, size_t(length - done), off_t(offset + done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw ParseError::readFailed(QString::fromLocal8Bit(std::strerror(errno)));
#else
    if (!m_file->seek(offset))
        throw ParseError::readFailed(m_file->errorString());
    while (done < length) {
        const qint64 count = m_file->read(into + done, length - done);
        if (count < 0)
            throw ParseError::readFailed(m_file->errorString());
#endif
        if (count == 0)
            throw ParseError::readFailed(QStringLiteral("il file è cambiato durante la lettura"));
        done += count;
    }
}

void DatabaseFile::loadChunk(qsizetype chunk)
{
    reusePagesFor(chunk);
    const qint64 start = qint64(chunk) << chunkShift;
    const qint64 length = std::min<qint64>(chunkSize, m_bytes.size() - start);
    readAt(start, chunkAt(chunk), length);
    m_loaded[size_t(chunk)] = true;
    const qint64 bytesRead = *m_bytesRead += length;
    if (!m_progress)
        return;
    // A chunk was read: the file is not empty. Siblings may read parts again, so the figure is capped.
    const int percent = int(std::min<qint64>(bytesRead * 100 / m_bytes.size(), 100));
    if (percent > m_percentTold)
        m_progress(m_percentTold = percent);
}

void DatabaseFile::reusePagesFor(qsizetype chunk)
{
#ifdef Q_OS_LINUX
    const auto own = std::find(m_spareChunks.begin(), m_spareChunks.end(), chunk);
    if (own != m_spareChunks.end()) { // read again where its pages still are
        m_spareChunks.erase(own);
        return;
    }
    if (m_spareChunks.empty())
        return;
    const qsizetype spare = m_spareChunks.back();
    m_spareChunks.pop_back();
    // The pages replace the chunk's untouched ones, and the spare's place stays mapped, untouched: never a
    // hole that another thread's allocation could take meanwhile. Kernels before 5.7 refuse; then the
    // spare's pages simply go.
    if (::mremap(chunkAt(spare), size_t(chunkSize), size_t(chunkSize),
                 MREMAP_MAYMOVE | MREMAP_FIXED | MREMAP_DONTUNMAP, chunkAt(chunk)) == MAP_FAILED)
        ::madvise(chunkAt(spare), size_t(chunkSize), MADV_DONTNEED);
#else
    Q_UNUSED(chunk);
#endif
}

void DatabaseFile::release(qsizetype offset, qsizetype end)
{
    end = std::min(end, m_bytes.size());
    const qsizetype first = (offset + chunkSize - 1) >> chunkShift;
    const qsizetype last = end == m_bytes.size() ? qsizetype(m_loaded.size()) : end >> chunkShift; // exclusive
    for (qsizetype chunk = first; chunk < last; ++chunk) {
        if (!m_loaded[size_t(chunk)])
            continue;
        m_loaded[size_t(chunk)] = false;
#ifdef Q_OS_LINUX
        // A few are kept for the next chunks to be read; the others' pages simply go, and read as zeros
        // until a load fills them again.
        constexpr size_t sparesKept = 4;
        if (m_spareChunks.size() < sparesKept)
            m_spareChunks.push_back(chunk);
        else
            ::madvise(chunkAt(chunk), size_t(chunkSize), MADV_DONTNEED);
#endif
    }
}

void DatabaseFile::finish()
{
    if (m_progress && m_percentTold < 100)
        m_progress(m_percentTold = 100);
}

} // namespace kestrune
