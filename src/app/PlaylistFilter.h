#pragma once

#include "PlaylistSearchIndex.h"
#include "core/Playlist.h"

#include <QList>
#include <QString>

namespace kestrune {

// A text as the search compares it: canonically composed, so that equivalent texts match.
QString searchForm(const QString &text);

// Which playlists the playlists pane shows, in database order.
struct PlaylistFilter {
    QString searchText; // as typed, not trimmed
    bool hideMasterPlaylist = true;
    bool onlySmartPlaylists = false;

    // Kept: not a hidden master, smart when only smart ones are wanted, and, with a search text, a name or a
    // resolved track's title or artist containing it, case-blind.
    [[nodiscard]] bool accepts(const Playlist &playlist) const;
    // The master and smart-only conditions alone, which both ways of searching share.
    [[nodiscard]] bool passesListFilters(const Playlist &playlist) const;
    [[nodiscard]] QList<Playlist> apply(const QList<Playlist> &playlists) const;
    // The same answer through an index built for these playlists, much faster on large libraries.
    [[nodiscard]] QList<Playlist> apply(const QList<Playlist> &playlists,
                                        const PlaylistSearchIndex &index) const;
};

} // namespace kestrune
