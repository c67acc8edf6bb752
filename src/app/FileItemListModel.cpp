#include "FileItemListModel.h"

#include "device/IPodDevice.h"

#include <QLocale>

namespace kestrune {

QVariant FileItemListModel::data(const QModelIndex &index, int role) const
{
    if (!isValidRow(index))
        return {};
    const FileItemRow &row = rowAt(index);
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return row.item.name;
    case IdRole:
        return row.item.id();
    case SizeTextRole:
        return row.item.sizeBytes ? formattedByteCount(*row.item.sizeBytes) : QString();
    case DateTextRole:
        if (!row.item.modificationDate)
            return QString();
        // Date and minutes; seconds add nothing to a file list.
        return QLocale().toString(row.item.modificationDate->date(), QLocale::ShortFormat) +
               QStringLiteral(", ") +
               QLocale().toString(row.item.modificationDate->time(), QLocale::ShortFormat);
    case ModificationDateRole:
        return row.item.modificationDate ? QVariant(*row.item.modificationDate) : QVariant();
    case IsSelectedRole:
        return row.isSelected;
    default:
        return {};
    }
}

QHash<int, QByteArray> FileItemListModel::roleNames() const
{
    return {{IdRole, "fileId"},
            {NameRole, "name"},
            {SizeTextRole, "sizeText"},
            {DateTextRole, "dateText"},
            {ModificationDateRole, "modificationDate"},
            {IsSelectedRole, "isSelected"}};
}

} // namespace kestrune
