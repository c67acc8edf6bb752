#pragma once

#include <QString>

namespace kestrune {

// A file-system failure while reading a file whole. Raised as it is, never wrapped in ParseError.
struct FileReadError {
    QString path;
    QString errorDescription;

    bool operator==(const FileReadError &) const = default;
};

} // namespace kestrune
