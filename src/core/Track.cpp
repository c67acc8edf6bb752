#include "Track.h"

#include "TextTrim.h"

namespace kestrune {

Track::Track()
{
    // Default tracks, such as QHash::value() gives for an id it lacks, share one empty record.
    static const QSharedDataPointer<Shared> empty(new Shared);
    d = empty;
}

Track::Track(TrackFields fields) : d(new Shared(std::move(fields))) {}

QString Track::formattedDuration() const
{
    const quint32 minutes = d->totalTimeMs / 60000;
    const quint32 seconds = (d->totalTimeMs / 1000) % 60;
    return QString::number(minutes) + u':' + QStringLiteral("%1").arg(seconds, 2, 10, QLatin1Char('0'));
}

QString Track::rockboxPath() const
{
    QString path = d->ipodPath;
    path.replace(u':', u'/');
    if (!path.startsWith(u'/'))
        path.prepend(u'/');
    return path;
}

QString Track::displayTitle() const
{
    const QString trimmed = trimmedWhitespaceAndNewlines(d->title);
    if (!trimmed.isEmpty())
        return trimmed;
    // The stored path is colon-separated, so this usually yields the whole path; that is intended.
    const QString lastComponent = lastSlashComponent(d->ipodPath);
    if (!lastComponent.isEmpty())
        return lastComponent;
    return QStringLiteral("Track ") + QString::number(d->id);
}

QString Track::displayArtist() const
{
    const QString trimmed = trimmedWhitespaceAndNewlines(d->artist);
    return trimmed.isEmpty() ? QStringLiteral("Unknown Artist") : trimmed;
}

QString Track::displayAlbum() const
{
    const QString trimmed = trimmedWhitespaceAndNewlines(d->album);
    return trimmed.isEmpty() ? QStringLiteral("Unknown Album") : trimmed;
}

size_t qHash(const Track &track, size_t seed) noexcept
{
    const TrackFields &f = track.fields();
    return qHashMulti(seed, f.id, f.title, f.artist, f.album, f.genre, f.composer, f.ipodPath, f.fileSize,
                      f.totalTimeMs, f.trackNumber, f.year, f.bitrate, f.rating, f.playCount, f.lastPlayed,
                      f.skipCount, f.albumArtist, f.dbId, f.artworkId);
}

} // namespace kestrune
