#include "PlaylistFilter.h"

namespace kestrune {

bool PlaylistFilter::passesListFilters(const Playlist &playlist) const
{
    return !(hideMasterPlaylist && playlist.isMaster) && !(onlySmartPlaylists && !playlist.isSmart);
}

QString searchForm(const QString &text)
{
    // Canonically equivalent texts ("Café" typed, "Cafe" + U+0301 stored) compare equal once composed.
    return text.normalized(QString::NormalizationForm_C);
}

bool PlaylistFilter::accepts(const Playlist &playlist) const
{
    if (!passesListFilters(playlist))
        return false;
    const QString needle = searchForm(searchText);
    const auto found = [&needle](const QString &text) {
        return searchForm(text).contains(needle, Qt::CaseInsensitive);
    };
    if (needle.isEmpty() || found(playlist.name))
        return true;
    return std::any_of(playlist.tracks.cbegin(), playlist.tracks.cend(),
                       [&found](const Track &track) { return found(track.title()) || found(track.artist()); });
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
