#include "ITunesDBParser.h"

#include "FileSystemError.h"
#include "MhodText.h"
#include "ParseError.h"

#include <QFile>
#include <QFileInfo>
#include <QUuid>

namespace kestrune {

namespace {

// Object types of a track's string objects.
enum MhodType : quint32 {
    mhodTitle = 1,
    mhodPath = 2,
    mhodAlbum = 3,
    mhodArtist = 4,
    mhodGenre = 5,
    mhodComposer = 12,
};

// Any of these in a playlist item marks it smart; 100 and 101 included, as real databases have them.
bool isSmartMarker(quint32 type)
{
    return type == 50 || type == 51 || type == 100 || type == 101;
}

// Reads a four-byte tag and tells whether it is `expected`. An unreadable tag is a mismatch.
bool readTag(BinaryReader &reader, QLatin1StringView expected)
{
    const std::optional<QString> tag = reader.readFourCC();
    return tag && *tag == expected;
}

void storeTrackString(Track &track, quint32 type, QString text)
{
    switch (type) {
    case mhodTitle:
        track.title = std::move(text);
        break;
    case mhodPath:
        track.ipodPath = std::move(text);
        break;
    case mhodAlbum:
        track.album = std::move(text);
        break;
    case mhodArtist:
        track.artist = std::move(text);
        break;
    case mhodGenre:
        track.genre = std::move(text);
        break;
    case mhodComposer:
        track.composer = std::move(text);
        break;
    default:
        break;
    }
}

// The track id of one playlist entry: +24, else +20, else +16, the first non-zero word.
quint32 readEntryTrackId(BinaryReader &reader, qsizetype entryStart, quint32 headerLen)
{
    quint32 trackId = 0;
    if (headerLen >= 28) {
        reader.seek(entryStart + 24);
        trackId = reader.readUInt32LE().value_or(0);
    }
    if (trackId == 0 && headerLen >= 24) {
        reader.seek(entryStart + 20);
        trackId = reader.readUInt32LE().value_or(0);
    }
    if (trackId == 0) {
        reader.seek(entryStart + 16);
        trackId = reader.readUInt32LE().value_or(0);
    }
    return trackId;
}

void resolveTracks(QList<Playlist> &playlists, const QHash<quint32, Track> &tracks)
{
    for (Playlist &playlist : playlists) {
        playlist.tracks.reserve(playlist.trackIds.size());
        for (quint32 trackId : std::as_const(playlist.trackIds)) {
            const auto found = tracks.constFind(trackId);
            if (found != tracks.constEnd())
                playlist.tracks.append(*found);
        }
    }
}

} // namespace

ParseResult ITunesDBParser::parse(const QUrl &fileURL) const
{
    const QString path = fileURL.toLocalFile();
    QFile file(path);
    const auto failure = [&] {
        return FileSystemError{path, QStringLiteral("The file “%1” couldn’t be read: %2")
                                       .arg(QFileInfo(path).fileName(), file.errorString())};
    };
    if (!file.open(QIODevice::ReadOnly))
        throw failure();

    const qint64 size = file.size();
    if (uchar *mapped = size > 0 ? file.map(0, size) : nullptr) {
        // Every string the parser keeps is decoded into memory of its own, so the mapping may end with
        // the file.
        return parse(QByteArray::fromRawData(reinterpret_cast<const char *>(mapped), qsizetype(size)));
    }
    const QByteArray data = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw failure();
    return parse(data);
}

ParseResult ITunesDBParser::parse(const QByteArray &data, ParseWork *work) const
{
    if (data.size() < 32)
        throw ParseError::fileTooSmall();

    BinaryReader reader(data);
    if (!readTag(reader, QLatin1StringView("mhbd")))
        throw ParseError::invalidHeader();

    const std::optional<quint32> headerLen = reader.readUInt32LE();
    reader.skip(4); // total length, not used
    const std::optional<quint32> ignored1 = reader.readUInt32LE();
    const std::optional<quint32> ignored2 = reader.readUInt32LE();
    const std::optional<quint32> sectionCount = reader.readUInt32LE();
    if (!headerLen || !ignored1 || !ignored2 || !sectionCount)
        throw ParseError::readFailed(QStringLiteral("Impossibile leggere l'header mhbd"));

    ParseBudget budget(data.size());
    ParseResult result;
    reader.seek(*headerLen);

    quint32 sectionsRead = 0;
    while (reader.remainingBytes() >= 12 && sectionsRead < *sectionCount && budget.spendIteration()) {
        const qsizetype chunkStart = reader.offset();
        const std::optional<QString> tag = reader.readFourCC();
        if (!tag)
            break;
        if (*tag != QLatin1StringView("mhsd")) {
            reader.seek(chunkStart + 4);
            continue;
        }
        const std::optional<quint32> sectionHeaderLen = reader.readUInt32LE();
        const std::optional<quint32> sectionTotalLen = reader.readUInt32LE();
        const std::optional<quint32> sectionType = reader.readUInt32LE();
        if (!sectionHeaderLen || !sectionTotalLen || !sectionType || !budget.spendChunk())
            break;
        reader.seek(chunkStart + *sectionHeaderLen);
        const qsizetype sectionEnd = chunkStart + *sectionTotalLen;

        if (*sectionType == 1) {
            const QList<Track> tracks = parseTrackList(reader, sectionEnd, budget);
            for (const Track &track : tracks) {
                const auto slot = result.tracks.find(track.id);
                if (slot == result.tracks.end()) {
                    result.tracks.insert(track.id, track);
                    result.trackOrder.append(track.id);
                } else {
                    *slot = track; // a later record with the same id wins
                }
            }
        } else if (*sectionType == 2) {
            result.playlists.append(parsePlaylistList(reader, sectionEnd, budget));
        }

        reader.seek(sectionEnd);
        ++sectionsRead;
        if (*sectionTotalLen == 0)
            break; // the cursor cannot move past this section
    }

    resolveTracks(result.playlists, result.tracks);
    if (work)
        *work = budget.spent();
    return result;
}

QList<Track> ITunesDBParser::parseTrackList(BinaryReader &reader, qsizetype sectionEnd,
                                            ParseBudget &budget) const
{
    QList<Track> tracks;
    if (reader.remainingBytes() < 12)
        return tracks;
    const qsizetype listStart = reader.offset();
    if (!readTag(reader, QLatin1StringView("mhlt")))
        return tracks;
    const std::optional<quint32> headerLen = reader.readUInt32LE();
    const std::optional<quint32> count = reader.readUInt32LE();
    if (!headerLen || !count || !budget.spendChunk())
        return tracks;
    reader.seek(listStart + *headerLen);

    for (quint32 index = 0; index < *count && budget.spendIteration(); ++index) {
        if (reader.offset() >= sectionEnd || reader.remainingBytes() < 20)
            break;
        const qsizetype itemStart = reader.offset();
        const std::optional<QString> tag = reader.readFourCC();
        if (!tag)
            break;
        if (*tag != QLatin1StringView("mhit")) {
            reader.seek(itemStart + 1); // one byte at a time, and the step uses up an item
            continue;
        }
        const std::optional<quint32> itemHeaderLen = reader.readUInt32LE();
        const std::optional<quint32> itemTotalLen = reader.readUInt32LE();
        const std::optional<quint32> stringCount = reader.readUInt32LE();
        const std::optional<quint32> trackId = reader.readUInt32LE();
        if (!itemHeaderLen || !itemTotalLen || !stringCount || !trackId || !budget.spendChunk())
            break;

        Track track;
        track.id = *trackId;
        if (*itemHeaderLen >= 60) {
            reader.seek(itemStart + 36);
            track.fileSize = reader.readUInt32LE().value_or(0);
            track.totalTimeMs = reader.readUInt32LE().value_or(0);
            track.trackNumber = reader.readUInt32LE().value_or(0);
            reader.readUInt32LE(); // total tracks, not used
            track.year = reader.readUInt32LE().value_or(0);
            track.bitrate = reader.readUInt32LE().value_or(0);
        }

        reader.seek(itemStart + *itemHeaderLen);
        const qsizetype itemEnd = itemStart + *itemTotalLen;
        for (quint32 s = 0; s < *stringCount && budget.spendIteration(); ++s) {
            if (reader.offset() >= itemEnd || reader.remainingBytes() < 16)
                break;
            const qsizetype mhodStart = reader.offset();
            if (!readTag(reader, QLatin1StringView("mhod")))
                break;
            const quint32 mhodHeaderLen = reader.readUInt32LE().value_or(0);
            const quint32 mhodTotalLen = reader.readUInt32LE().value_or(0);
            const quint32 mhodType = reader.readUInt32LE().value_or(0);
            if (!budget.spendChunk())
                break;
            storeTrackString(track, mhodType,
                             readMhodString(reader, mhodStart, mhodHeaderLen, mhodTotalLen, budget));
            reader.seek(mhodStart + mhodTotalLen);
            if (mhodTotalLen == 0)
                break;
        }

        tracks.append(std::move(track));
        reader.seek(itemEnd);
        if (*itemTotalLen == 0)
            break;
    }
    return tracks;
}

QList<Playlist> ITunesDBParser::parsePlaylistList(BinaryReader &reader, qsizetype sectionEnd,
                                                  ParseBudget &budget) const
{
    QList<Playlist> playlists;
    if (reader.remainingBytes() < 12)
        return playlists;
    const qsizetype listStart = reader.offset();
    if (!readTag(reader, QLatin1StringView("mhlp")))
        return playlists;
    const std::optional<quint32> headerLen = reader.readUInt32LE();
    const std::optional<quint32> count = reader.readUInt32LE();
    if (!headerLen || !count || !budget.spendChunk())
        return playlists;
    reader.seek(listStart + *headerLen);

    for (quint32 index = 0; index < *count && budget.spendIteration(); ++index) {
        if (reader.offset() >= sectionEnd || reader.remainingBytes() < 24)
            break;
        const qsizetype itemStart = reader.offset();
        const std::optional<QString> tag = reader.readFourCC();
        if (!tag)
            break;
        if (*tag != QLatin1StringView("mhyp")) {
            reader.seek(itemStart + 1);
            continue;
        }
        const std::optional<quint32> itemHeaderLen = reader.readUInt32LE();
        const std::optional<quint32> itemTotalLen = reader.readUInt32LE();
        const std::optional<quint32> stringCount = reader.readUInt32LE();
        const std::optional<quint32> entryCount = reader.readUInt32LE();
        if (!itemHeaderLen || !itemTotalLen || !stringCount || !entryCount || !budget.spendChunk())
            break;

        Playlist playlist;
        if (*itemHeaderLen >= 24)
            playlist.isMaster = reader.readUInt32LE() == 1u;
        if (*itemHeaderLen >= 36) {
            reader.seek(itemStart + 28);
            playlist.dbId = reader.readUInt64LE().value_or(0);
        }

        reader.seek(itemStart + *itemHeaderLen);
        const qsizetype itemEnd = itemStart + *itemTotalLen;
        for (quint32 s = 0; s < *stringCount && budget.spendIteration(); ++s) {
            if (reader.offset() >= itemEnd || reader.remainingBytes() < 16)
                break;
            const qsizetype mhodStart = reader.offset();
            if (!readTag(reader, QLatin1StringView("mhod"))) {
                reader.seek(mhodStart); // the entries may start right here
                break;
            }
            const quint32 mhodHeaderLen = reader.readUInt32LE().value_or(0);
            const quint32 mhodTotalLen = reader.readUInt32LE().value_or(0);
            const quint32 mhodType = reader.readUInt32LE().value_or(0);
            if (!budget.spendChunk())
                break;
            if (isSmartMarker(mhodType))
                playlist.isSmart = true;
            else if (mhodType == mhodTitle)
                playlist.name = readMhodString(reader, mhodStart, mhodHeaderLen, mhodTotalLen, budget);
            reader.seek(mhodStart + mhodTotalLen);
            if (mhodTotalLen == 0)
                break;
        }

        for (quint32 e = 0; e < *entryCount && budget.spendIteration(); ++e) {
            if (reader.remainingBytes() < 24)
                break;
            const qsizetype entryStart = reader.offset();
            if (!readTag(reader, QLatin1StringView("mhip")) || !budget.spendChunk())
                break;
            const quint32 entryHeaderLen = reader.readUInt32LE().value_or(0);
            const quint32 entryTotalLen = reader.readUInt32LE().value_or(0);
            if (const quint32 trackId = readEntryTrackId(reader, entryStart, entryHeaderLen))
                playlist.trackIds.append(trackId);
            reader.seek(entryStart + entryTotalLen);
            if (entryTotalLen == 0)
                break;
        }

        if (playlist.name.isEmpty()) {
            playlist.name = playlist.isMaster ? QStringLiteral("iPod Library")
                                              : QStringLiteral("Playlist ") + QString::number(playlists.size() + 1);
        }
        playlist.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
        playlists.append(std::move(playlist));
        reader.seek(itemStart + *itemTotalLen);
        if (*itemTotalLen == 0)
            break;
    }
    return playlists;
}

QString ITunesDBParser::readMhodString(BinaryReader &reader, qsizetype mhodStart, quint32 headerLen,
                                       quint32 totalLen, ParseBudget &budget) const
{
    if (headerLen >= totalLen)
        return {};
    const qint64 payloadLen = qint64(totalLen) - headerLen;

    if (payloadLen >= 16) {
        reader.seek(mhodStart + headerLen);
        const bool flaggedUtf8 = reader.readUInt32LE() == 2u;
        const quint32 storedLength = reader.readUInt32LE().value_or(0);
        reader.skip(8);
        const qint64 available = payloadLen - 16;
        const qint64 byteCount = (storedLength != 0 && storedLength <= available) ? storedLength : available;
        if (byteCount < 1)
            return {};
        const std::optional<QByteArrayView> bytes = reader.readView(byteCount);
        if (!bytes || !budget.spendDecodedBytes(bytes->size()))
            return {};
        return trimMhodText(decodeStructuredMhodText(*bytes, flaggedUtf8));
    }

    reader.seek(mhodStart + headerLen);
    const std::optional<QByteArrayView> bytes = reader.readView(payloadLen);
    if (!bytes || !budget.spendDecodedBytes(bytes->size()))
        return {};
    return trimMhodText(decodeRawMhodText(*bytes));
}

} // namespace kestrune
