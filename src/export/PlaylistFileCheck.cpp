#include "PlaylistFileCheck.h"

#include "PlaylistWarnings.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringDecoder>

namespace kestrune {

namespace {

QString decoded(const QByteArray &bytes)
{
    QStringDecoder utf8(QStringConverter::Utf8);
    const QString text = utf8.decode(bytes);
    return utf8.hasError() ? QString::fromLatin1(bytes) : text;
}

// The path the player opens for one entry line, from the device's root.
QString resolvedEntry(QString entry, const QString &playlistFolder)
{
    entry.replace(u'\\', u'/');
    static const QRegularExpression drive(QStringLiteral("^[A-Za-z]:/"));
    if (drive.match(entry).hasMatch())
        return entry.mid(2);
    if (entry.startsWith(u'/'))
        return entry;
    return QDir::cleanPath(playlistFolder + u'/' + entry); // "../Music/x.mp3" included
}

} // namespace

PlaylistFileCheck checkPlaylistFile(DeviceFileIndex &deviceFiles, const QString &deviceRoot,
                                    const QString &devicePath, int playlistLimit)
{
    PlaylistFileCheck check;
    QFile file(deviceRoot + u'/' + devicePath);
    if (!file.open(QIODevice::ReadOnly))
        return check;
    const QString folder = u'/' + devicePath.left(qMax<qsizetype>(0, devicePath.lastIndexOf(u'/')));
    const QStringList lines = decoded(file.readAll()).split(u'\n');
    for (QString line : lines) {
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (line.startsWith(u'\uFEFF'))
            line.remove(0, 1);
        if (line.trimmed().isEmpty() || line.startsWith(u'#'))
            continue;
        ++check.entries;
        const QString path = resolvedEntry(line, folder);
        if (path.toUtf8().size() > playerPathLimitBytes)
            ++check.tooLong;
        else if (!deviceFiles.contains(path))
            ++check.unresolved;
    }
    check.pastLimit = qMax(0, check.entries - playlistLimit);
    return check;
}

} // namespace kestrune
