#pragma once

#include "RowListModel.h"
#include "core/Playlist.h"
#include "export/PlaylistWarnings.h"

#include <QHash>

namespace kestrune {

// What one row of the playlists pane shows.
struct PlaylistRow {
    QString id;
    QString name;
    int trackCount = 0;
    QString formattedDuration;
    bool isMaster = false;
    bool isSmart = false;
    bool isOnRockbox = false;
    QString existingFileName;
    bool isTicked = false;
    bool isActive = false; // the playlist whose details are shown
    QList<PlaylistWarning> warnings; // what the player will not play of it, once checked

    bool operator==(const PlaylistRow &) const = default;
    [[nodiscard]] const QString &key() const { return id; }

    // Everything but the duration text, which the caller fills in (it may have it ready).
    static PlaylistRow of(const Playlist &playlist, bool isTicked, bool isActive);
};

// The filtered playlists, as the playlists pane lists them.
class PlaylistListModel : public RowListModel<PlaylistRow> {
    Q_OBJECT

public:
    enum Role {
        IdRole = Qt::UserRole + 1,
        NameRole,
        TrackCountRole,
        FormattedDurationRole,
        IsMasterRole,
        IsSmartRole,
        IsOnRockboxRole,
        ExistingFileNameRole,
        IsTickedRole,
        IsActiveRole,
        WarningsRole, // [{kind, count, limit}], empty when the player plays it whole
    };
    Q_ENUM(Role)

    using RowListModel::RowListModel;

    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;
    // The row showing the playlist, or -1; constant time, as ticks look rows up one by one.
    [[nodiscard]] qsizetype rowOf(const QString &playlistId) const;
    // Replaces the rows and renews the index of rows by playlist.
    void setPlaylistRows(QList<PlaylistRow> rows);

private:
    QHash<QString, qsizetype> m_rowById;
};

} // namespace kestrune
