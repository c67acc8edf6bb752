#pragma once

#include "app/FileRevealer.h"

#include <QString>

namespace kestrune {

// Shows a file selected in the desktop's file manager: Finder on macOS, Explorer on Windows, and on Linux
// the file manager that answers the freedesktop FileManager1 interface. When that fails it opens the
// file's folder instead, and when that fails too it reports the failure.
class DesktopFileRevealer : public FileRevealer {
public:
    // On Linux, `busAddress` names the D-Bus bus to ask; empty means the session bus.
    explicit DesktopFileRevealer(QString busAddress = QString());

    void reveal(const QUrl &fileURL, std::function<void()> failed) override;

private:
    QString m_busAddress;
};

} // namespace kestrune
