#pragma once

#include "PendingFileAction.h"
#include "RowListModel.h"

namespace kestrune {

struct PendingActionRow {
    PendingFileAction action;

    bool operator==(const PendingActionRow &) const = default;
    [[nodiscard]] QUuid key() const { return action.id; }
};

// The staged deletions, in staging order.
class PendingActionListModel : public RowListModel<PendingActionRow> {
    Q_OBJECT

public:
    enum Role { IdRole = Qt::UserRole + 1, DescriptionRole, ItemNameRole };
    Q_ENUM(Role)

    using RowListModel::RowListModel;

    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;
};

} // namespace kestrune
