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

// Ends each text in the joined texts, so that no match runs from one text into the next. A noncharacter:
// no typed search holds it, and one that does is matched text by text instead.
constexpr QChar textEnd(0xFFFF);

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
                slot = indexOfTrack.insert(track.id(), int(m_trackTextStarts.size()));
                m_trackTextStarts.push_back(m_foldedTrackTexts.size());
                m_foldedTrackTexts += folded(track.title()) + textEnd;
                m_artistStarts.push_back(m_foldedTrackTexts.size());
                m_foldedTrackTexts += folded(track.artist()) + textEnd;
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
    const std::vector<bool> trackMatches = matchingTracks(needle);
    for (size_t p = 0; p < result.size(); ++p) {
        const std::vector<int> &members = m_tracksOfPlaylist[p];
        result[p] =
            m_foldedNames.at(qsizetype(p)).contains(needle) ||
            std::any_of(members.cbegin(), members.cend(), [&](int t) { return trackMatches[size_t(t)]; });
    }
    return result;
}

std::vector<bool> PlaylistSearchIndex::matchingTracks(const QString &needle) const
{
    std::vector<bool> matching(m_trackTextStarts.size());
    if (needle.contains(textEnd)) {
        const QStringView texts(m_foldedTrackTexts);
        for (size_t t = 0; t < matching.size(); ++t) {
            const qsizetype end = t + 1 < matching.size() ? m_trackTextStarts[t + 1] : texts.size();
            const qsizetype artist = m_artistStarts[t];
            matching[t] = texts.sliced(m_trackTextStarts[t], artist - 1 - m_trackTextStarts[t]).contains(needle) ||
                          texts.sliced(artist, end - 1 - artist).contains(needle);
        }
        return matching;
    }
    // Each hit marks its track, and the scan goes on from the next track's texts.
    for (qsizetype at = m_foldedTrackTexts.indexOf(needle); at >= 0;) {
        const auto next = std::upper_bound(m_trackTextStarts.cbegin(), m_trackTextStarts.cend(), at);
        matching[size_t(next - m_trackTextStarts.cbegin() - 1)] = true;
        if (next == m_trackTextStarts.cend())
            break;
        at = m_foldedTrackTexts.indexOf(needle, *next);
    }
    return matching;
}

} // namespace kestrune
