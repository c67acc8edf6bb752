#pragma once

#include "app/FileRevealer.h"

namespace kestrune {

// Shows a file selected in the desktop's file manager: Finder on macOS, Explorer on Windows, and on Linux
// the file manager that answers the freedesktop FileManager1 interface, else the folder opened plainly.
class DesktopFileRevealer : public FileRevealer {
public:
    void reveal(const QUrl &fileURL) override;
};

} // namespace kestrune
