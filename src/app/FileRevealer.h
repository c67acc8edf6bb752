#pragma once

#include <QUrl>

namespace kestrune {

// Shows a file selected in the system's file manager ("Show in Finder").
class FileRevealer {
public:
    virtual ~FileRevealer() = default;
    virtual void reveal(const QUrl &fileURL) = 0;
};

} // namespace kestrune
