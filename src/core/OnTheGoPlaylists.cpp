#include "OnTheGoPlaylists.h"

#include "BinaryReader.h"

#include <QFile>
#include <QUuid>

namespace kestrune {

namespace {

// Far beyond any real file (the player keeps a few thousand entries), so a damaged or hostile file
// costs bounded work.
constexpr qint64 largestOnTheGoFile = 4 * 1024 * 1024;
constexpr int mostFiles = 1000;

} // namespace

std::optional<QList<quint32>> parseOnTheGoFile(const QByteArray &bytes)
{
    BinaryReader reader(bytes);
    if (reader.readFourCC(QLatin1StringView("mhpo")) != BinaryReader::TagMatch::matches)
        return std::nullopt;
    const std::optional<quint32> headerLength = reader.readUInt32LE();
    const std::optional<quint32> count = reader.readUInt32LE();
    if (!headerLength || !count || *headerLength < 12 || *headerLength > quint32(bytes.size()))
        return std::nullopt;
    reader.seek(*headerLength);
    QList<quint32> indexes;
    const qsizetype held = qMin<qsizetype>(*count, reader.remainingBytes() / 4);
    indexes.reserve(held);
    for (qsizetype i = 0; i < held; ++i)
        indexes.append(*reader.readUInt32LE());
    return indexes;
}

OnTheGoPlaylists readOnTheGoPlaylists(const QString &iTunesFolder, const ParseResult &library)
{
    OnTheGoPlaylists found;
    for (int number = 0; number < mostFiles; ++number) {
        const QString name = number == 0 ? QStringLiteral("OTGPlaylistInfo")
                                         : QStringLiteral("OTGPlaylistInfo_%1").arg(number);
        QFile file(iTunesFolder + u'/' + name);
        if (!file.open(QIODevice::ReadOnly)) {
            if (number == 0)
                continue; // the numbered files may stand without the first
            break;
        }
        const std::optional<QList<quint32>> indexes = parseOnTheGoFile(file.read(largestOnTheGoFile));
        if (!indexes) {
            found.problems.append(QStringLiteral("%1: not an On-The-Go playlist file; skipped").arg(name));
            continue;
        }
        if (indexes->isEmpty())
            continue;
        Playlist playlist{.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper(), .isOnTheGo = true};
        for (quint32 index : *indexes) {
            if (index >= quint32(library.trackItemIds.size())) {
                found.problems.append(QStringLiteral("%1: entry %2 points past the %3 tracks of the database (it "
                                                     "was made for another one); skipped")
                                          .arg(name)
                                          .arg(index)
                                          .arg(library.trackItemIds.size()));
                playlist.trackIds.clear();
                break;
            }
            const quint32 id = library.trackItemIds.at(index);
            playlist.trackIds.append(id);
            playlist.tracks.append(library.tracks.value(id));
        }
        if (playlist.trackIds.isEmpty())
            continue;
        playlist.name = QStringLiteral("On-The-Go %1").arg(found.playlists.size() + 1);
        found.playlists.append(std::move(playlist));
    }
    return found;
}

} // namespace kestrune
