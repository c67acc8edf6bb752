#include "PlaylistListModel.h"

namespace kestrune {

PlaylistRow PlaylistRow::of(const Playlist &playlist, bool isTicked, bool isActive)
{
    return PlaylistRow{.id = playlist.id,
                       .name = playlist.name,
                       .trackCount = playlist.trackCount(),
                       .isMaster = playlist.isMaster,
                       .isSmart = playlist.isSmart,
                       .isOnRockbox = playlist.isAlreadyOnRockbox(),
                       .existingFileName =
                           playlist.existingRockboxFile ? playlist.existingRockboxFile->filename : QString(),
                       .isTicked = isTicked,
                       .isActive = isActive};
}

QVariant PlaylistListModel::data(const QModelIndex &index, int role) const
{
    if (!isValidRow(index))
        return {};
    const PlaylistRow &row = rowAt(index);
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return row.name;
    case IdRole:
        return row.id;
    case TrackCountRole:
        return row.trackCount;
    case FormattedDurationRole:
        return row.formattedDuration;
    case IsMasterRole:
        return row.isMaster;
    case IsSmartRole:
        return row.isSmart;
    case IsOnRockboxRole:
        return row.isOnRockbox;
    case ExistingFileNameRole:
        return row.existingFileName;
    case IsTickedRole:
        return row.isTicked;
    case IsActiveRole:
        return row.isActive;
    case WarningsRole: {
        QVariantList warnings;
        for (const PlaylistWarning &warning : row.warnings) {
            warnings.append(QVariantMap{{QStringLiteral("kind"), warningKindName(warning.kind)},
                                        {QStringLiteral("count"), warning.count},
                                        {QStringLiteral("limit"), warning.limit}});
        }
        return warnings;
    }
    default:
        return {};
    }
}

QHash<int, QByteArray> PlaylistListModel::roleNames() const
{
    return {{IdRole, "playlistId"},           {NameRole, "name"},
            {TrackCountRole, "trackCount"},   {FormattedDurationRole, "formattedDuration"},
            {IsMasterRole, "isMaster"},       {IsSmartRole, "isSmart"},
            {IsOnRockboxRole, "isOnRockbox"}, {ExistingFileNameRole, "existingFileName"},
            {IsTickedRole, "isTicked"},       {IsActiveRole, "isActive"},
            {WarningsRole, "warnings"}};
}

qsizetype PlaylistListModel::rowOf(const QString &playlistId) const
{
    return m_rowById.value(playlistId, -1);
}

void PlaylistListModel::setPlaylistRows(QList<PlaylistRow> rows)
{
    setRows(std::move(rows));
    m_rowById.clear();
    m_rowById.reserve(this->rows().size());
    for (qsizetype row = 0; row < this->rows().size(); ++row)
        m_rowById.insert(this->rows().at(row).id, row);
}

} // namespace kestrune
