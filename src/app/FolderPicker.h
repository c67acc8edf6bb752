#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace kestrune {

struct FolderPickerRequest {
    QString prompt;                 // the confirm button's text
    std::optional<QString> message; // shown above the folders
    bool canCreateFolders = false;
};

// A modal folder chooser. The desktop interface installs the system's; tests answer on their own.
class FolderPicker {
public:
    virtual ~FolderPicker() = default;
    // The chosen folder, or none when the user cancels. Blocks until the user answers.
    virtual std::optional<QUrl> pickFolder(const FolderPickerRequest &request) = 0;
};

} // namespace kestrune
