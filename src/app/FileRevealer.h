#pragma once

#include <QUrl>

#include <functional>

namespace kestrune {

// Shows a file selected in the system's file manager ("Show in Finder").
class FileRevealer {
public:
    virtual ~FileRevealer() = default;
    // Calls `failed`, at once or later on the calling thread, when nothing could show the file.
    virtual void reveal(const QUrl &fileURL, std::function<void()> failed) = 0;
};

} // namespace kestrune
