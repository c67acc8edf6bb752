#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

namespace kestrune {

// How far reading a file has come: the bytes read so far and the file's size.
using ReadProgress = std::function<void(qint64 bytesRead, qint64 totalBytes)>;

// Reads a database file whole with ordinary reads, so that a bad sector is an error rather than a signal.
// Throws FileSystemError when the file cannot be opened, ParseError::readFailed when it is no regular
// file (a FIFO would block for ever) or when a read fails. Reports progress after every chunk.
QByteArray readDatabaseFile(const QString &path, const ReadProgress &progress = {});

} // namespace kestrune
