#include "DialogFolderPicker.h"

#include <QFileDialog>

namespace kestrune {

std::optional<QUrl> DialogFolderPicker::pickFolder(const FolderPickerRequest &request)
{
    QFileDialog dialog(nullptr, request.message.value_or(request.prompt));
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    dialog.setOption(QFileDialog::ReadOnly, !request.canCreateFolders); // read-only offers no "New Folder"
    dialog.setLabelText(QFileDialog::Accept, request.prompt);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedUrls().isEmpty())
        return std::nullopt;
    return dialog.selectedUrls().constFirst();
}

} // namespace kestrune
