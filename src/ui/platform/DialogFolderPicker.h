#pragma once

#include "app/FolderPicker.h"

namespace kestrune {

// The system's folder chooser, run modally.
class DialogFolderPicker : public FolderPicker {
public:
    std::optional<QUrl> pickFolder(const FolderPickerRequest &request) override;
};

} // namespace kestrune
