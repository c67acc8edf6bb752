#include "Track.h"

#include "TextTrim.h"

namespace kestrune {

QString Track::formattedDuration() const
{
    const quint32 minutes = totalTimeMs / 60000;
    const quint32 seconds = (totalTimeMs / 1000) % 60;
    return QString::number(minutes) + u':' + QStringLiteral("%1").arg(seconds, 2, 10, QLatin1Char('0'));
}

QString Track::rockboxPath() const
{
    QString path = ipodPath;
    path.replace(u':', u'/');
    if (!path.startsWith(u'/'))
        path.prepend(u'/');
    return path;
}

QString Track::displayTitle() const
{
    const QString trimmed = trimmedWhitespaceAndNewlines(title);
    if (!trimmed.isEmpty())
        return trimmed;
    // The stored path is colon-separated, so this usually yields the whole path; that is intended.
    const QString lastComponent = lastSlashComponent(ipodPath);
    if (!lastComponent.isEmpty())
        return lastComponent;
    return QStringLiteral("Track ") + QString::number(id);
}

QString Track::displayArtist() const
{
    const QString trimmed = trimmedWhitespaceAndNewlines(artist);
    return trimmed.isEmpty() ? QStringLiteral("Unknown Artist") : trimmed;
}

QString Track::displayAlbum() const
{
    const QString trimmed = trimmedWhitespaceAndNewlines(album);
    return trimmed.isEmpty() ? QStringLiteral("Unknown Album") : trimmed;
}

size_t qHash(const Track &track, size_t seed) noexcept
{
    return qHashMulti(seed, track.id, track.title, track.artist, track.album, track.genre, track.composer,
                      track.ipodPath, track.fileSize, track.totalTimeMs, track.trackNumber, track.year,
                      track.bitrate, track.rating, track.playCount, track.lastPlayed, track.skipCount);
}

} // namespace kestrune
