#include "M3UContent.h"

#include "core/TextTrim.h"

namespace kestrune {

namespace {

QString withoutSurroundingSlashes(const QString &path)
{
    qsizetype begin = 0;
    qsizetype end = path.size();
    while (begin < end && path.at(begin) == u'/')
        ++begin;
    while (end > begin && path.at(end - 1) == u'/')
        --end;
    return path.mid(begin, end - begin);
}

} // namespace

QString m3uPathLine(const Track &track, const QString &customPathPrefix)
{
    const QString devicePath = track.rockboxPath();
    if (customPathPrefix.isEmpty())
        return devicePath;
    QString prefix = customPathPrefix;
    if (prefix.endsWith(u'/'))
        prefix.chop(1); // exactly one: "/Music//" keeps a slash
    if (devicePath.startsWith(QLatin1StringView("/iPod_Control")))
        return prefix + devicePath;
    return prefix + u'/' + withoutSurroundingSlashes(devicePath);
}

QString m3uInfoLine(const Track &track)
{
    const QString seconds = QString::number(track.totalTimeMs / 1000);
    const QString artist = trimmedWhitespaceAndNewlines(track.artist);
    const QString title = track.displayTitle();
    if (!artist.isEmpty() && artist != QLatin1StringView("Unknown Artist"))
        return QStringLiteral("#EXTINF:") + seconds + u',' + artist + QStringLiteral(" - ") + title;
    return QStringLiteral("#EXTINF:") + seconds + u',' + title;
}

QString m3uContent(const Playlist &playlist, const ConversionOptions &options)
{
    QString text;
    text.reserve(32 + playlist.tracks.size() * (options.extendedM3U ? 120 : 50));
    if (options.extendedM3U)
        text += QStringLiteral("#EXTM3U\n");
    for (const Track &track : playlist.tracks) {
        if (options.extendedM3U)
            text += m3uInfoLine(track) + u'\n';
        text += m3uPathLine(track, options.customPathPrefix) + u'\n';
    }
    // An empty list of lines still ends with one line feed.
    if (text.isEmpty())
        text = QStringLiteral("\n");
    return text;
}

} // namespace kestrune
