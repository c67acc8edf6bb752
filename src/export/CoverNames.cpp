#include "CoverNames.h"

namespace kestrune {

namespace {

// Rockbox's tag reader trims with the C locale's isspace(): ASCII white space only.
QString withoutTrailingSpace(const QString &text)
{
    qsizetype end = text.size();
    while (end > 0 && QStringView(u" \t\n\v\f\r").contains(text.at(end - 1)))
        --end;
    return text.left(end);
}

} // namespace

CoverNaming coverNameFor(const Track &track, const QString &sizeSuffix)
{
    const QString albumArtist = withoutTrailingSpace(track.albumArtist());
    const QString artist = albumArtist.isEmpty() ? withoutTrailingSpace(track.artist()) : albumArtist;
    const QString album = withoutTrailingSpace(track.album());
    if (artist.isEmpty() || album.isEmpty())
        return {{}, CoverNaming::Skip::noAlbumOrArtist};
    QString name = artist + u'-' + album + sizeSuffix;
    for (QChar &character : name) {
        if (character == u'"')
            character = u'\'';
        else if (QStringView(u"*/:<>?\\|").contains(character))
            character = u'_';
        else if (character.unicode() < 0x20 || character.unicode() == 0x7F)
            return {name, CoverNaming::Skip::refusedCharacter};
    }
    if (coverPlayerPath(name + QStringLiteral(".jpg")).toUtf8().size() > longestPlayerPath)
        return {name, CoverNaming::Skip::tooLong};
    return {name, CoverNaming::Skip::none};
}

QString coverPlayerPath(const QString &fileName)
{
    return QStringLiteral("/.rockbox/albumart/") + fileName;
}

QString coverNameKey(const QString &name)
{
    QString key = name;
    for (QChar &character : key) {
        if (character.unicode() >= u'A' && character.unicode() <= u'Z')
            character = QChar(character.unicode() + (u'a' - u'A'));
    }
    return key;
}

} // namespace kestrune
