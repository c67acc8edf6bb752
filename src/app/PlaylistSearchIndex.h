#pragma once

#include "core/Playlist.h"

#include <QList>
#include <QString>

#include <vector>

namespace kestrune {

// The playlists pane's search, prepared once per loaded library: each distinct track's title and artist
// case-folded once, all in one text, each playlist's distinct tracks as indexes, and its duration text. A
// keystroke then scans that one text once instead of looking at every copy of a track in every playlist.
// The answers are those of PlaylistFilter: a name, title or artist containing the text, case-blind.
class PlaylistSearchIndex {
public:
    PlaylistSearchIndex() = default;
    explicit PlaylistSearchIndex(const QList<Playlist> &playlists);

    // Whether the index was built for these playlists (same ids, same order).
    [[nodiscard]] bool describes(const QList<Playlist> &playlists) const;
    // For each playlist, in order, whether the search text matches it. An empty text matches all.
    [[nodiscard]] std::vector<bool> matches(const QString &searchText) const;
    [[nodiscard]] const QString &formattedDuration(qsizetype playlist) const
    {
        return m_durations.at(playlist);
    }

private:
    QStringList m_playlistIds;
    QStringList m_foldedNames;
    QStringList m_durations;
    // Each distinct track's folded title and artist, each followed by a separator no search text holds.
    QString m_foldedTrackTexts;
    std::vector<qsizetype> m_trackTextStarts; // where each distinct track's title starts
    std::vector<qsizetype> m_artistStarts;    // and its artist
    std::vector<std::vector<int>> m_tracksOfPlaylist;

    [[nodiscard]] std::vector<bool> matchingTracks(const QString &needle) const;
};

} // namespace kestrune
