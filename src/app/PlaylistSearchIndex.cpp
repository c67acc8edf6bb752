#include "PlaylistSearchIndex.h"

#include "PlaylistFilter.h"

#include <QHash>

namespace kestrune {

namespace {

// Composed after folding: folding can decompose ("ǰ" folds to "j" and a combining caron).
QString folded(const QString &text)
{
    return searchForm(text.toCaseFolded());
}

} // namespace

PlaylistSearchIndex::PlaylistSearchIndex(const QList<Playlist> &playlists)
{
    QHash<quint32, int> indexOfTrack;
    std::vector<int> lastSeenIn; // per distinct track: the playlist that last listed it
    for (const Playlist &playlist : playlists) {
        const int playlistNumber = int(m_playlistIds.size());
        m_playlistIds.append(playlist.id);
        m_foldedNames.append(folded(playlist.name));
        m_durations.append(playlist.formattedTotalDuration());
        std::vector<int> &members = m_tracksOfPlaylist.emplace_back();
        for (const Track &track : playlist.tracks) {
            auto slot = indexOfTrack.find(track.id());
            if (slot == indexOfTrack.end()) {
                slot = indexOfTrack.insert(track.id(), int(m_foldedTitles.size()));
                m_foldedTitles.push_back(folded(track.title()));
                m_foldedArtists.push_back(folded(track.artist()));
                lastSeenIn.push_back(playlistNumber);
                members.push_back(*slot);
            } else if (lastSeenIn[size_t(*slot)] != playlistNumber) {
                lastSeenIn[size_t(*slot)] = playlistNumber;
                members.push_back(*slot);
            }
        }
    }
}

bool PlaylistSearchIndex::describes(const QList<Playlist> &playlists) const
{
    if (playlists.size() != m_playlistIds.size())
        return false;
    for (qsizetype i = 0; i < playlists.size(); ++i) {
        if (playlists.at(i).id != m_playlistIds.at(i))
            return false;
    }
    return true;
}

std::vector<bool> PlaylistSearchIndex::matches(const QString &searchText) const
{
    std::vector<bool> result(size_t(m_playlistIds.size()), true);
    if (searchText.isEmpty())
        return result;
    const QString needle = folded(searchText);
    std::vector<bool> trackMatches(m_foldedTitles.size());
    for (size_t t = 0; t < m_foldedTitles.size(); ++t)
        trackMatches[t] = m_foldedTitles[t].contains(needle) || m_foldedArtists[t].contains(needle);
    for (size_t p = 0; p < result.size(); ++p) {
        const std::vector<int> &members = m_tracksOfPlaylist[p];
        result[p] =
            m_foldedNames.at(qsizetype(p)).contains(needle) ||
            std::any_of(members.cbegin(), members.cend(), [&](int t) { return trackMatches[size_t(t)]; });
    }
    return result;
}

} // namespace kestrune
