#include "Playlist.h"

#include "Prefetch.h"

namespace kestrune {

namespace {

QString twoDigits(qint64 value)
{
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

} // namespace

int Playlist::trackCount() const
{
    return int(tracks.isEmpty() ? trackIds.size() : tracks.size());
}

qint64 Playlist::totalDurationSeconds() const
{
    qint64 total = 0;
    forEachTrackAhead(tracks, prefetchTrackPathAndDuration,
                      [&total](const Track &track) { total += track.totalTimeMs() / 1000; });
    return total;
}

QString Playlist::formattedTotalDuration() const
{
    const qint64 total = totalDurationSeconds();
    const qint64 minutes = (total % 3600) / 60;
    const qint64 seconds = total % 60;
    if (total < 3600)
        return QString::number(minutes) + QStringLiteral("m ") + twoDigits(seconds) + u's';
    return QString::number(total / 3600) + QStringLiteral("h ") + twoDigits(minutes) + QStringLiteral("m ") +
           twoDigits(seconds) + u's';
}

size_t qHash(const Playlist &playlist, size_t seed) noexcept
{
    seed = qHashMulti(seed, playlist.id, playlist.dbId, playlist.name, playlist.isMaster, playlist.isSmart,
                      playlist.isFolder, playlist.parentDbId, playlist.isOnTheGo);
    seed = qHashRange(playlist.trackIds.begin(), playlist.trackIds.end(), seed);
    seed = qHashRange(playlist.tracks.begin(), playlist.tracks.end(), seed);
    return playlist.existingRockboxFile ? qHash(*playlist.existingRockboxFile, seed) : seed;
}

} // namespace kestrune
