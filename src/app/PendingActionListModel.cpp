#include "PendingActionListModel.h"

namespace kestrune {

QVariant PendingActionListModel::data(const QModelIndex &index, int role) const
{
    if (!isValidRow(index))
        return {};
    const PendingFileAction &action = rowAt(index).action;
    switch (role) {
    case Qt::DisplayRole:
    case DescriptionRole:
        return action.description;
    case IdRole:
        return action.id.toString(QUuid::WithoutBraces);
    case ItemNameRole:
        return action.item ? action.item->name : QString();
    default:
        return {};
    }
}

QHash<int, QByteArray> PendingActionListModel::roleNames() const
{
    return {{IdRole, "actionId"}, {DescriptionRole, "description"}, {ItemNameRole, "itemName"}};
}

} // namespace kestrune
