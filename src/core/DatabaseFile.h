#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace kestrune {

// How far reading a file has come, in percent; told each time the figure grows, 100 last.
using ReadProgress = std::function<void(int percent)>;

// A database file read with ordinary reads as the parser comes to its parts, a megabyte at a time, so that
// a bad sector is an error rather than a signal (as with a memory map), and a part the parser skips (such
// as the second copy of the playlists iTunes writes) is never read and takes no memory. The parser gives
// back each megabyte once it has passed it; on Linux the memory of one passed megabyte is moved under the
// next one to be read, so a large file is read through a few megabytes of memory that are already there.
class DatabaseFile {
public:
    // Opens the file. Throws FileSystemError when it cannot be opened, ParseError::readFailed when it is no
    // regular file (a FIFO would block for ever).
    explicit DatabaseFile(const QString &path, ReadProgress progress = {});
    // A second reader of the same open file with a buffer of its own, for another thread; what it reads
    // counts towards the first one's progress, which only the first one tells.
    explicit DatabaseFile(DatabaseFile &sibling);
    ~DatabaseFile();
    DatabaseFile(const DatabaseFile &) = delete;
    DatabaseFile &operator=(const DatabaseFile &) = delete;

    // The file's bytes; only the parts loaded so far hold its content.
    [[nodiscard]] const QByteArray &bytes() const { return m_bytes; }

    // Loads [offset, offset + length) unless it is loaded. Throws ParseError::readFailed when a read fails.
    void load(qsizetype offset, qsizetype length)
    {
        for (qsizetype chunk = offset >> chunkShift; length > 0 && chunk <= (offset + length - 1) >> chunkShift; ++chunk) {
            if (!m_loaded[size_t(chunk)])
                loadChunk(chunk);
        }
    }
    // Gives back the memory of the whole chunks inside [offset, end), which the parser is done with; a
    // later load of them reads them again.
    void release(qsizetype offset, qsizetype end);
    // The same for everything before `offset`, for a parser that moves on through a section. Cheap to call
    // often: it acts only when a chunk boundary has been passed.
    void releaseBefore(qsizetype offset)
    {
        if ((offset >> chunkShift) > m_passedChunks) {
            release(m_passedChunks << chunkShift, offset);
            m_passedChunks = offset >> chunkShift;
        }
    }
    // Says the whole file is read, for the progress shown.
    void finish();

    // The file is loaded and given back in chunks of this size.
    static constexpr int chunkShift = 20;
    static constexpr qsizetype chunkSize = qsizetype(1) << chunkShift;

private:

    void allocateBuffer(qsizetype size);
    void loadChunk(qsizetype chunk);
    // Reads exactly `length` bytes at `offset`, or throws.
    void readAt(qint64 offset, char *into, qint64 length);
    [[nodiscard]] char *chunkAt(qsizetype chunk) const { return m_buffer + (chunk << chunkShift); }
    // Linux: gives the chunk the pages of a released one, so reading into it needs no fresh memory.
    void reusePagesFor(qsizetype chunk);

    QString m_path;
    std::shared_ptr<QFile> m_file; // shared with a sibling, which reads it at offsets of its own
    char *m_buffer = nullptr;
    qsizetype m_bufferSize = 0; // whole chunks, so that every chunk's pages can be moved whole
    QByteArray m_bytes;         // the file's size of m_buffer, not owning it
    std::vector<char> m_loaded; // per chunk; not vector<bool>, which the parser's every read would unpack
    std::vector<qsizetype> m_spareChunks; // released, their pages still there to be reused
    qsizetype m_passedChunks = 0;
    std::shared_ptr<std::atomic<qint64>> m_bytesRead; // by this file and its siblings
    int m_percentTold = 0;
    ReadProgress m_progress;
};

} // namespace kestrune
