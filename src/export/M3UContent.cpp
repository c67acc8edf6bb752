#include "M3UContent.h"

#include "core/TextTrim.h"

#include <algorithm>
#include <charconv>

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

qsizetype m3uPathLineUtf8Size(const Track &track, const QString &customPathPrefix)
{
    if (!customPathPrefix.isEmpty())
        return m3uPathLine(track, customPathPrefix).toUtf8().size();
    const QString &path = track.ipodPath(); // ':' and '/' are one byte each, so the swap keeps the size
    qsizetype size = path.startsWith(u':') || path.startsWith(u'/') ? 0 : 1;
    for (qsizetype i = 0; i < path.size(); ++i) {
        const char16_t unit = path.at(i).unicode();
        if (unit < 0x80)
            size += 1;
        else if (unit < 0x800)
            size += 2;
        else if (!QChar::isSurrogate(unit))
            size += 3;
        else if (QChar::isHighSurrogate(unit) && i + 1 < path.size() && path.at(i + 1).isLowSurrogate())
            size += 4, ++i;
        else
            size += 1; // an unpaired surrogate becomes '?', as QString::toUtf8 has it
    }
    return size;
}

namespace {

// Appends the device path with the prefix rule, straight into `text`. A large export writes hundreds of
// thousands of these lines, so no line is built as a string of its own.
void appendPathLine(QString &text, const Track &track, const QString &customPathPrefix)
{
    if (!customPathPrefix.isEmpty()) {
        text += m3uPathLine(track, customPathPrefix);
        return;
    }
    if (!track.ipodPath().startsWith(u':') && !track.ipodPath().startsWith(u'/'))
        text += u'/';
    const qsizetype start = text.size();
    text += track.ipodPath();
    std::replace(text.begin() + start, text.end(), QChar(u':'), QChar(u'/'));
}

void appendInfoLine(QString &text, const Track &track)
{
    text += QLatin1StringView("#EXTINF:");
    char digits[16];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, track.totalTimeMs() / 1000);
    Q_UNUSED(error);
    text += QLatin1StringView(digits, end - digits);
    text += u',';
    const QString artist = trimmedWhitespaceAndNewlines(track.artist());
    if (!artist.isEmpty() && artist != QLatin1StringView("Unknown Artist")) {
        text += artist;
        text += QLatin1StringView(" - ");
    }
    text += track.displayTitle();
}

} // namespace

QString m3uInfoLine(const Track &track)
{
    QString line;
    appendInfoLine(line, track);
    return line;
}

QString m3uContent(const Playlist &playlist, const ConversionOptions &options)
{
    QString text;
    text.reserve(16 + playlist.tracks.size() * (options.extendedM3U ? 110 : 45));
    if (options.extendedM3U)
        text += QLatin1StringView("#EXTM3U\n");
    for (const Track &track : playlist.tracks) {
        if (options.extendedM3U) {
            appendInfoLine(text, track);
            text += u'\n';
        }
        appendPathLine(text, track, options.customPathPrefix);
        text += u'\n';
    }
    // An empty list of lines still ends with one line feed.
    if (text.isEmpty())
        text = QStringLiteral("\n");
    return text;
}

std::optional<QString> controlCharacterInPrefix(const QString &prefix)
{
    for (const QChar c : prefix) {
        const char16_t code = c.unicode();
        if (code >= 0x20 && code != 0x7F)
            continue;
        const QString number = QStringLiteral("U+") + QString::number(code, 16).toUpper().rightJustified(4, u'0');
        switch (code) {
        case u'\n':
            return number + QStringLiteral(" (line feed)");
        case u'\r':
            return number + QStringLiteral(" (carriage return)");
        case u'\t':
            return number + QStringLiteral(" (tab)");
        case 0x7F:
            return number + QStringLiteral(" (delete)");
        default:
            return number + QStringLiteral(" (a control character)");
        }
    }
    return std::nullopt;
}

} // namespace kestrune
