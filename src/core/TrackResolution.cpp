#include "TrackResolution.h"

#include "HelperThread.h"
#include "Prefetch.h"

#include <limits>
#include <vector>

namespace kestrune {

namespace {

// Finds tracks by id: through a plain array when the ids are dense, as iTunes numbers them from a small base,
// else through the table itself.
class TrackLookup {
public:
    explicit TrackLookup(const QHash<quint32, Track> &tracks) : m_tracks(tracks)
    {
        if (tracks.isEmpty())
            return;
        auto [lowest, highest] = std::pair{std::numeric_limits<quint32>::max(), quint32(0)};
        for (auto at = tracks.keyBegin(); at != tracks.keyEnd(); ++at) {
            lowest = std::min(lowest, *at);
            highest = std::max(highest, *at);
        }
        if (qint64(highest) - lowest > 4 * qint64(tracks.size()) + 4096)
            return;
        m_lowest = lowest;
        m_byId.assign(size_t(highest - lowest) + 1, nullptr);
        for (auto at = tracks.cbegin(); at != tracks.cend(); ++at)
            m_byId[at.key() - lowest] = &at.value();
    }

    [[nodiscard]] const Track *find(quint32 id) const
    {
        if (!m_byId.empty()) {
            const quint64 index = quint64(id) - m_lowest;
            return id >= m_lowest && index < m_byId.size() ? m_byId[index] : nullptr;
        }
        const auto at = m_tracks.constFind(id);
        return at == m_tracks.constEnd() ? nullptr : &*at;
    }

private:
    const QHash<quint32, Track> &m_tracks;
    quint32 m_lowest = 0;
    std::vector<const Track *> m_byId;
};

// Resolves the entries of playlists [first, last).
void resolveTracks(Playlist *playlists, qsizetype first, qsizetype last, const TrackLookup &tracks)
{
    // Random tracks of a large table are cache misses. Looking them all up first lets those lookups
    // overlap, and fetching a few tracks ahead hides most of the wait while copying.
    constexpr qsizetype lookahead = 8;
    std::vector<const Track *> found;
    for (qsizetype index = first; index < last; ++index) {
        Playlist &playlist = playlists[index];
        found.clear();
        found.reserve(size_t(playlist.trackIds.size()));
        for (quint32 trackId : std::as_const(playlist.trackIds)) {
            if (const Track *track = tracks.find(trackId))
                found.push_back(track);
        }
        playlist.tracks.reserve(qsizetype(found.size()));
        for (size_t i = 0; i < found.size(); ++i) {
            if (i + lookahead < found.size())
                prefetchTrack(*found[i + lookahead]);
            playlist.tracks.append(*found[i]);
        }
    }
}

} // namespace

void resolvePlaylistTracks(QList<Playlist> &playlistList, const QHash<quint32, Track> &tracks)
{
    Playlist *playlists = playlistList.data();
    const qsizetype playlistCount = playlistList.size();
    qint64 entries = 0;
    for (qsizetype i = 0; i < playlistCount; ++i)
        entries += playlists[i].trackIds.size();
    qsizetype half = 0;
    for (qint64 counted = 0; half < playlistCount && counted * 2 < entries; ++half)
        counted += playlists[half].trackIds.size();
    const TrackLookup lookup(tracks);
    HelperThread resolver(entries >= 10000, [&] { resolveTracks(playlists, half, playlistCount, lookup); });
    resolveTracks(playlists, 0, half, lookup);
    resolver.wait();
}

} // namespace kestrune
