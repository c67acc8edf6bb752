#pragma once

#include <QString>

namespace kestrune {

// A file-system failure (reading a file whole, removing a file), carried with the system's own text.
struct FileSystemError {
    QString path;
    QString errorDescription;

    bool operator==(const FileSystemError &) const = default;
};

} // namespace kestrune
