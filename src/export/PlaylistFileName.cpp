#include "PlaylistFileName.h"

#include "core/TextTrim.h"

#include <QSet>
#include <QTextBoundaryFinder>

#include <array>

namespace kestrune {

namespace {

bool isUnsafeInFileName(char16_t c)
{
    switch (c) {
    case u':':
    case u'/':
    case u'\\':
    case u'|':
    case u'*':
    case u'?':
    case u'<':
    case u'>':
    case u'"':
        return true;
    default:
        return false;
    }
}

bool isControl(char16_t c)
{
    return c < 0x20 || c == 0x7F;
}

QString codePointText(char16_t c)
{
    return QStringLiteral("U+") + QString::number(c, 16).toUpper().rightJustified(4, u'0');
}

bool isReservedDeviceName(const QString &stem)
{
    static const std::array<QLatin1StringView, 4> plain{QLatin1StringView("CON"), QLatin1StringView("PRN"),
                                                        QLatin1StringView("AUX"), QLatin1StringView("NUL")};
    for (QLatin1StringView name : plain) {
        if (stem.compare(name, Qt::CaseInsensitive) == 0)
            return true;
    }
    if (stem.size() != 4)
        return false;
    const QString head = stem.left(3).toUpper();
    const QChar digit = stem.at(3);
    return (head == QLatin1StringView("COM") || head == QLatin1StringView("LPT")) && digit >= u'1' &&
           digit <= u'9';
}

// Cuts at a grapheme boundary, so that no character, accent or emoji is split.
QString shortenedToUtf8Bytes(const QString &name, qsizetype maximumBytes)
{
    if (name.size() * 3 <= maximumBytes || name.toUtf8().size() <= maximumBytes)
        return name;
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, name);
    qsizetype kept = 0;
    qsizetype bytes = 0;
    for (qsizetype next = boundaries.toNextBoundary(); next > 0; next = boundaries.toNextBoundary()) {
        bytes += QStringView(name).mid(kept, next - kept).toUtf8().size();
        if (bytes > maximumBytes)
            break;
        kept = next;
    }
    return name.left(kept);
}

} // namespace

QString sanitizedPlaylistName(const QString &name)
{
    QString safe = name;
    for (QChar &c : safe) {
        if (isUnsafeInFileName(c.unicode()))
            c = u'_';
    }
    // Trimmed before the control characters go, so that a name of blanks and line breaks still becomes
    // "Playlist", while a tab inside a name becomes "_".
    safe = trimmedWhitespaceAndNewlines(safe);
    if (safe.isEmpty())
        return QStringLiteral("Playlist");
    for (QChar &c : safe) {
        if (isControl(c.unicode()))
            c = u'_';
    }
    if (safe.startsWith(u'.'))
        safe[0] = u'_';
    const qsizetype stemEnd = safe.contains(u'.') ? safe.indexOf(u'.') : safe.size();
    if (isReservedDeviceName(safe.left(stemEnd)))
        safe.insert(stemEnd, u'_');
    return shortenedToUtf8Bytes(safe, maximumBaseNameBytes);
}

QString caseBlindKey(const QString &name)
{
    return name.normalized(QString::NormalizationForm_C).toCaseFolded();
}

namespace {

// Whether `candidate` is `name` or `name` with a " (N)" suffix, case-blind.
bool isFormOf(const QString &candidate, const QString &name)
{
    const QString key = caseBlindKey(candidate);
    const QString base = caseBlindKey(name);
    if (key == base)
        return true;
    const qsizetype open = key.lastIndexOf(QStringLiteral(" ("));
    if (open < 0 || !key.endsWith(u')'))
        return false;
    bool isNumber = false;
    key.mid(open + 2, key.size() - open - 3).toInt(&isNumber);
    return isNumber && base.startsWith(key.left(open));
}

} // namespace

QStringList distinctBaseNames(const QStringList &baseNames, bool limitLength,
                              const QList<std::optional<QString>> &preferred)
{
    QSet<QString> taken;
    taken.reserve(baseNames.size());
    for (const QString &name : baseNames)
        taken.insert(caseBlindKey(name));
    QSet<QString> given;
    QStringList distinct(baseNames.size());
    // First the names playlists had before, so that a suffix stays with its playlist across runs.
    for (qsizetype i = 0; i < preferred.size() && i < baseNames.size(); ++i) {
        const std::optional<QString> &earlier = preferred.at(i);
        if (earlier && isFormOf(*earlier, baseNames.at(i)) && !given.contains(caseBlindKey(*earlier)) &&
            (caseBlindKey(*earlier) == caseBlindKey(baseNames.at(i)) || !taken.contains(caseBlindKey(*earlier)))) {
            distinct[i] = *earlier;
            given.insert(caseBlindKey(*earlier));
        }
    }
    for (qsizetype i = 0; i < baseNames.size(); ++i) {
        if (!distinct.at(i).isNull())
            continue;
        const QString &name = baseNames.at(i);
        QString chosen = name;
        // A suffixed name may not take the name another playlist has of its own.
        for (int number = 2; given.contains(caseBlindKey(chosen)); ++number) {
            const QString suffix = QStringLiteral(" (%1)").arg(number);
            const QString base = limitLength ? shortenedToUtf8Bytes(name, maximumBaseNameBytes - suffix.size()) : name;
            chosen = base + suffix;
            if (taken.contains(caseBlindKey(chosen)))
                chosen = name; // try the next number
        }
        given.insert(caseBlindKey(chosen));
        distinct[i] = chosen;
    }
    return distinct;
}

std::optional<QString> unwritableCharacterIn(const QString &name)
{
    for (QChar c : name) {
        if (isControl(c.unicode())) {
            return QStringLiteral("Il nome della playlist contiene il carattere di controllo %1, che nessun "
                                  "file system accetta: '%2'.")
                .arg(codePointText(c.unicode()), name);
        }
    }
    return std::nullopt;
}

std::optional<QString> describeFatRefusedCharacter(const QString &fileName)
{
    for (QChar c : fileName) {
        if (isControl(c.unicode()))
            return QStringLiteral("the control character %1").arg(codePointText(c.unicode()));
        if (isUnsafeInFileName(c.unicode()) && c != u'/')
            return QStringLiteral("the character '%1'").arg(c);
    }
    return std::nullopt;
}

} // namespace kestrune
