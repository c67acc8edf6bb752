// What the loaded device's player will make of the playlists: its limit, and the entries it cannot play.
#include "AppViewModel.h"

#include "BackgroundTask.h"

namespace kestrune {

namespace {

struct PlayerCheck {
    QList<QString> playlistIds; // the library checked, to tell whether it is still the one shown
    RockboxPlayer player;
    QHash<QString, QList<PlaylistWarning>> warnings;
};

} // namespace

void AppViewModel::checkPlaylistsForPlayer()
{
    // Off the GUI thread and after the lists are shown: on a slow device, reading the music folders of a
    // large library takes seconds even at one listing per folder.
    runInBackground(
        this,
        [playlists = m_playlists, root = m_loadedDevice.toLocalFile(), options = m_options] {
            PlayerCheck check;
            check.player = readRockboxPlayer(root);
            DeviceFileIndex files(root);
            const bool holdsMusic = files.contains(QStringLiteral("iPod_Control/Music"));
            PlaylistChecker checker(options, check.player.playlistLimit, holdsMusic ? &files : nullptr);
            for (const Playlist &playlist : playlists) {
                check.playlistIds.append(playlist.id);
                if (playlist.isMaster)
                    continue;
                QList<PlaylistWarning> found = checker.warnings(playlist);
                if (!found.isEmpty())
                    check.warnings.insert(playlist.id, std::move(found));
            }
            return check;
        },
        [this](PlayerCheck check) {
            const bool sameLibrary = check.playlistIds.size() == m_playlists.size() &&
                                     std::equal(check.playlistIds.cbegin(), check.playlistIds.cend(), m_playlists.cbegin(),
                                                [](const QString &id, const Playlist &playlist) { return id == playlist.id; });
            if (!sameLibrary)
                return; // a newer load or a clear came in meanwhile
            m_player = check.player;
            m_warnings = std::move(check.warnings);
            Q_EMIT playerChanged();
            refilterPlaylists();
        });
}

} // namespace kestrune
