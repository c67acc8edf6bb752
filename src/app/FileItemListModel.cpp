#include "FileItemListModel.h"


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
        return row.item.sizeBytes ? m_locale.formattedDataSize(*row.item.sizeBytes, 2, QLocale::DataSizeSIFormat)
                                  : QString();
    case DateTextRole:
        if (!row.item.modificationDate)
            return QString();
        // Date and minutes; seconds add nothing to a file list.
        return m_locale.toString(row.item.modificationDate->date(), QLocale::ShortFormat) +
               QStringLiteral(", ") + m_locale.toString(row.item.modificationDate->time(), QLocale::ShortFormat);
    case ModificationDateRole:
        return row.item.modificationDate ? QVariant(*row.item.modificationDate) : QVariant();
    case IsSelectedRole:
        return row.isSelected;
    default:
        return {};
    }
}

void FileItemListModel::setLanguage(AppLanguage language)
{
    const QLocale::Language wanted = language == AppLanguage::italian ? QLocale::Italian : QLocale::English;
    const QLocale system = QLocale::system();
    const QLocale locale = system.language() == wanted ? system : QLocale(wanted);
    if (locale == m_locale)
        return;
    m_locale = locale;
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0), index(rowCount() - 1), {SizeTextRole, DateTextRole});
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
