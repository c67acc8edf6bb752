#include "PlaylistFilter.h"

namespace kestrune {

bool PlaylistFilter::passesListFilters(const Playlist &playlist) const
{
    return !(hideMasterPlaylist && playlist.isMaster) && !(onlySmartPlaylists && !playlist.isSmart);
}

bool PlaylistFilter::accepts(const Playlist &playlist) const
{
    if (!passesListFilters(playlist))
        return false;
    if (searchText.isEmpty() || playlist.name.contains(searchText, Qt::CaseInsensitive))
        return true;
    return std::any_of(playlist.tracks.cbegin(), playlist.tracks.cend(), [this](const Track &track) {
        return track.title.contains(searchText, Qt::CaseInsensitive) ||
               track.artist.contains(searchText, Qt::CaseInsensitive);
    });
}

QList<Playlist> PlaylistFilter::apply(const QList<Playlist> &playlists) const
{
    QList<Playlist> kept;
    std::copy_if(playlists.cbegin(), playlists.cend(), std::back_inserter(kept),
                 [this](const Playlist &playlist) { return accepts(playlist); });
    return kept;
}

QList<Playlist> PlaylistFilter::apply(const QList<Playlist> &playlists,
                                      const PlaylistSearchIndex &index) const
{
    const std::vector<bool> searched = index.matches(searchText);
    QList<Playlist> kept;
    for (qsizetype i = 0; i < playlists.size(); ++i) {
        const Playlist &playlist = playlists.at(i);
        if (searched[size_t(i)] && passesListFilters(playlist))
            kept.append(playlist);
    }
    return kept;
}

} // namespace kestrune
