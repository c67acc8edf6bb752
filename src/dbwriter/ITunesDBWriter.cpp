#include "ITunesDBWriter.h"

#include "ByteWriter.h"

#include <QStringEncoder>

namespace kestrune::dbwriter {

namespace {

// Tag, header length, second word (total length or item count), the rest of the header cut or padded to
// the header length, then the body.
QByteArray chunk(const char (&tag)[5], quint32 headerLength, quint32 secondWord, const QByteArray &headerRest,
                 const QByteArray &body)
{
    ByteWriter writer;
    writer.bytes(QByteArrayView(tag, 4)).u32(headerLength).u32(secondWord);
    writer.bytes(headerRest.left(qMax<qsizetype>(0, qsizetype(headerLength) - 12)));
    writer.padTo(headerLength);
    writer.bytes(body);
    return writer.data();
}

quint32 lengthOf(const QByteArray &bytes)
{
    return quint32(bytes.size());
}

QByteArray joined(const QList<QByteArray> &parts)
{
    QByteArray all;
    for (const QByteArray &part : parts)
        all += part;
    return all;
}

} // namespace

StringObject StringObject::utf16(quint32 type, const QString &text)
{
    QStringEncoder encoder(QStringConverter::Utf16LE);
    return StringObject{.type = type, .text = encoder.encode(text), .encodingFlag = 1};
}

StringObject StringObject::utf8(quint32 type, const QString &text)
{
    return StringObject{.type = type, .text = text.toUtf8(), .encodingFlag = 2};
}

StringObject StringObject::opaque(quint32 type, qsizetype payloadSize)
{
    return StringObject{.type = type, .text = QByteArray(payloadSize, '\0'), .encodingFlag = 0, .rawForm = true};
}

TrackItem TrackItem::song(quint32 id, const QString &title, const QString &artist, const QString &ipodPath,
                          quint32 totalTimeMs)
{
    TrackItem track{.id = id, .fileSize = 4000000, .totalTimeMs = totalTimeMs, .bitrate = 256};
    for (const auto &[type, text] : {std::pair{1u, title}, std::pair{4u, artist}, std::pair{2u, ipodPath}}) {
        if (!text.isEmpty())
            track.strings.append(StringObject::utf16(type, text));
    }
    return track;
}

PlaylistItem PlaylistItem::of(const QString &name, const QList<quint32> &trackIds, quint64 dbId)
{
    PlaylistItem playlist{.name = name, .dbId = dbId};
    for (quint32 id : trackIds)
        playlist.entries.append(PlaylistEntry{.trackId = id});
    return playlist;
}

QByteArray mhod(const StringObject &object)
{
    ByteWriter payload;
    if (!object.rawForm) {
        payload.u32(object.encodingFlag)
            .u32(object.storedLength.value_or(lengthOf(object.text)))
            .u32(0)
            .u32(0);
    }
    payload.bytes(object.text);
    const quint32 total = object.totalLength.value_or(object.headerLength + lengthOf(payload.data()));
    ByteWriter rest;
    rest.u32(object.type);
    return chunk("mhod", object.headerLength, total, rest.data(), payload.data());
}

QByteArray mhit(const TrackItem &track)
{
    QList<QByteArray> strings;
    for (const StringObject &object : track.strings)
        strings.append(mhod(object));
    const QByteArray body = joined(strings);

    ByteWriter header; // from offset 12
    header.u32(track.stringCount.value_or(quint32(track.strings.size())))
        .u32(track.id)
        .u32(1) // visible
        .zeros(7)
        .u8(track.rating) // at +31
        .zeros(4)
        .u32(track.fileSize)
        .u32(track.totalTimeMs)
        .u32(track.trackNumber)
        .u32(0) // total tracks
        .u32(track.year)
        .u32(track.bitrate);
    header.u32(44100u << 16).padTo(0x248 - 12); // the header is cut to its length below
    header.patchU32(80 - 12, track.playCount);
    header.patchU32(112 - 12, quint32(track.dbId));
    header.patchU32(116 - 12, quint32(track.dbId >> 32));
    header.patchU32(352 - 12, track.artworkId);
    header.patchU32(88 - 12, track.lastPlayed);
    header.patchU32(156 - 12, track.skipCount);
    const quint32 total = track.totalLength.value_or(track.headerLength + lengthOf(body));
    return chunk("mhit", track.headerLength, total, header.data(), body);
}

QByteArray mhip(const PlaylistEntry &entry)
{
    const QByteArray child = entry.withPositionObject ? mhod(StringObject::opaque(100, 0x14)) : QByteArray();
    ByteWriter header; // from offset 12: child count, then zeros where the id goes
    header.u32(entry.withPositionObject ? 1 : 0).zeros(16);
    header.patchU32(qsizetype(entry.idOffset) - 12, entry.trackId);
    const quint32 total = entry.totalLength.value_or(entry.headerLength + lengthOf(child));
    return chunk("mhip", entry.headerLength, total, header.data(), child);
}

QByteArray mhyp(const PlaylistItem &playlist)
{
    QList<QByteArray> objects;
    if (playlist.name)
        objects.append(mhod(StringObject::utf16(1, *playlist.name)));
    for (const StringObject &object : playlist.extraObjects)
        objects.append(mhod(object));
    QList<QByteArray> entries;
    for (const PlaylistEntry &entry : playlist.entries)
        entries.append(mhip(entry));
    const QByteArray body = joined(objects) + joined(entries);

    ByteWriter header; // from offset 12
    header.u32(playlist.stringCount.value_or(quint32(objects.size())))
        .u32(playlist.entryCount.value_or(quint32(entries.size())))
        .u32(playlist.isMaster ? 1 : 0)
        .u32(0) // timestamp
        .u64(playlist.dbId)
        .u32(0)                               // +0x24
        .u16(quint16(objects.size()))         // +0x28: string objects
        .u16(playlist.isFolder ? 0x0100 : 0)  // +0x2A
        .u32(0)                               // +0x2C: sort order
        .u64(playlist.parentDbId);            // +0x30
    const quint32 total = playlist.totalLength.value_or(playlist.headerLength + lengthOf(body));
    return chunk("mhyp", playlist.headerLength, total, header.data(), body);
}

QByteArray mhlt(const QList<QByteArray> &items, quint32 headerLength, std::optional<quint32> count)
{
    return chunk("mhlt", headerLength, count.value_or(quint32(items.size())), {}, joined(items));
}

QByteArray mhlp(const QList<QByteArray> &items, quint32 headerLength, std::optional<quint32> count)
{
    return chunk("mhlp", headerLength, count.value_or(quint32(items.size())), {}, joined(items));
}

QByteArray mhsd(quint32 type, const QByteArray &body, quint32 headerLength, std::optional<quint32> totalLength)
{
    ByteWriter rest;
    rest.u32(type);
    return chunk("mhsd", headerLength, totalLength.value_or(headerLength + lengthOf(body)), rest.data(), body);
}

QByteArray mhbd(const QList<QByteArray> &sections, quint32 headerLength, std::optional<quint32> sectionCount)
{
    const QByteArray body = joined(sections);
    ByteWriter rest; // from offset 12
    rest.u32(1).u32(0x19).u32(sectionCount.value_or(quint32(sections.size())));
    return chunk("mhbd", headerLength, headerLength + lengthOf(body), rest.data(), body);
}

QByteArray playCountsFile(const QList<PlayCountItem> &entries, quint32 entryLength)
{
    ByteWriter writer;
    writer.bytes("mhdp").u32(0x60).u32(entryLength).u32(quint32(entries.size())).padTo(0x60);
    for (const PlayCountItem &entry : entries) {
        ByteWriter item;
        item.u32(entry.plays)
            .u32(entry.lastPlayed)
            .u32(0)
            .u32(entry.rating)
            .u32(0)
            .u32(entry.skips)
            .padTo(entryLength);
        writer.bytes(item.data().left(entryLength));
    }
    return writer.data();
}

QByteArray onTheGoFile(const QList<quint32> &indexes, std::optional<quint32> count)
{
    ByteWriter writer;
    writer.bytes("mhpo").u32(20).u32(count.value_or(quint32(indexes.size()))).zeros(8);
    for (quint32 index : indexes)
        writer.u32(index);
    return writer.data();
}

ITunesDBWriter &ITunesDBWriter::addTrack(TrackItem track)
{
    m_tracks.append(std::move(track));
    return *this;
}

ITunesDBWriter &ITunesDBWriter::addPlaylist(PlaylistItem playlist)
{
    m_playlists.append(std::move(playlist));
    return *this;
}

ITunesDBWriter &ITunesDBWriter::withPodcastSection(bool enabled)
{
    m_podcastSection = enabled;
    return *this;
}

QByteArray ITunesDBWriter::build() const
{
    QList<QByteArray> tracks;
    tracks.reserve(m_tracks.size());
    for (const TrackItem &track : m_tracks)
        tracks.append(mhit(track));
    QList<QByteArray> playlists;
    playlists.reserve(m_playlists.size());
    for (const PlaylistItem &playlist : m_playlists)
        playlists.append(mhyp(playlist));

    const QByteArray playlistList = mhlp(playlists);
    QList<QByteArray> sections{mhsd(1, mhlt(tracks))};
    if (m_podcastSection)
        sections.append(mhsd(3, playlistList));
    sections.append(mhsd(2, playlistList));
    return mhbd(sections);
}

} // namespace kestrune::dbwriter
