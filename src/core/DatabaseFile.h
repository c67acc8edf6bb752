#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <functional>
#include <vector>

namespace kestrune {

// How far reading a file has come, in percent; told each time the figure grows, 100 last.
using ReadProgress = std::function<void(int percent)>;

// A database file read with ordinary reads as the parser comes to its parts, a megabyte at a time, so that
// a bad sector is an error rather than a signal (as with a memory map), and a part the parser skips (such
// as the second copy of the playlists iTunes writes) is never read and takes no memory.
class DatabaseFile {
public:
    // Opens the file. Throws FileSystemError when it cannot be opened, ParseError::readFailed when it is no
    // regular file (a FIFO would block for ever).
    explicit DatabaseFile(const QString &path, ReadProgress progress = {});

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
    // Says the whole file is read, for the progress shown.
    void finish();

private:
    static constexpr int chunkShift = 20;

    void loadChunk(qsizetype chunk);

    QFile m_file;
    QByteArray m_bytes;
    std::vector<bool> m_loaded;
    qint64 m_bytesRead = 0;
    int m_percentTold = 0;
    ReadProgress m_progress;
};

} // namespace kestrune
