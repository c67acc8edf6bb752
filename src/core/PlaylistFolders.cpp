#include "PlaylistFolders.h"

#include <QHash>
#include <QSet>

namespace kestrune {

QList<QStringList> folderPaths(const QList<Playlist> &playlists)
{
    QHash<quint64, const Playlist *> folders;
    for (const Playlist &playlist : playlists) {
        if (playlist.isFolder && playlist.dbId != 0)
            folders.insert(playlist.dbId, &playlist);
    }
    QList<QStringList> paths;
    paths.reserve(playlists.size());
    for (const Playlist &playlist : playlists) {
        QStringList path;
        QSet<quint64> seen{playlist.dbId};
        for (quint64 parent = playlist.parentDbId; parent != 0 && !seen.contains(parent);) {
            const Playlist *folder = folders.value(parent);
            if (!folder)
                break;
            seen.insert(parent);
            path.prepend(folder->name);
            parent = folder->parentDbId;
        }
        paths.append(path);
    }
    return paths;
}

QList<Playlist> flattenedFolders(const QList<Playlist> &playlists)
{
    const QList<QStringList> paths = folderPaths(playlists);
    QList<Playlist> flat;
    for (qsizetype i = 0; i < playlists.size(); ++i) {
        if (playlists.at(i).isFolder)
            continue;
        Playlist playlist = playlists.at(i);
        if (!paths.at(i).isEmpty())
            playlist.name = (paths.at(i) + QStringList{playlist.name}).join(QStringLiteral(" - "));
        flat.append(std::move(playlist));
    }
    return flat;
}

} // namespace kestrune
