#pragma once

#include "RowListModel.h"
#include "export/RockboxFileItem.h"
#include "localization/AppLanguage.h"

#include <QLocale>

namespace kestrune {

struct FileItemRow {
    RockboxFileItem item;
    bool isSelected = false;

    bool operator==(const FileItemRow &) const = default;
    [[nodiscard]] QString key() const { return item.id(); }
};

// The playlist files of the Rockbox folder, as the Rockbox pane lists them.
class FileItemListModel : public RowListModel<FileItemRow> {
    Q_OBJECT

public:
    enum Role {
        IdRole = Qt::UserRole + 1,
        NameRole,
        SizeTextRole,
        DateTextRole,
        ModificationDateRole,
        IsSelectedRole
    };
    Q_ENUM(Role)

    using RowListModel::RowListModel;

    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    // Sizes and dates follow the interface language: in the system's own formats when the system speaks
    // it, else in the language's usual ones.
    void setLanguage(AppLanguage language);

private:
    QLocale m_locale;
};

} // namespace kestrune
