#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

// Assembles iTunesDB files for tests, benchmarks, fuzz seeds and the demo iPod. Every chunk is built from
// a plain description, and every length or count can be overridden to describe a damaged file.
namespace kestrune::dbwriter {

// A data object ("mhod") with text.
struct StringObject {
    quint32 type = 1;
    QByteArray text;          // already encoded
    quint32 encodingFlag = 1; // 2 means UTF-8, anything else UTF-16LE
    std::optional<quint32> storedLength; // defaults to the text's size
    bool rawForm = false; // no 16-byte string header: the text follows the object header directly
    quint32 headerLength = 24;
    std::optional<quint32> totalLength;

    static StringObject utf16(quint32 type, const QString &text);
    static StringObject utf8(quint32 type, const QString &text);
    // A non-text object such as smart rules (50, 51) or view settings (100), with an opaque payload.
    static StringObject opaque(quint32 type, qsizetype payloadSize = 0x2C);
};

struct TrackItem {
    quint32 id = 0;
    quint32 fileSize = 0;
    quint32 totalTimeMs = 0;
    quint32 trackNumber = 0;
    quint32 year = 0;
    quint32 bitrate = 0;
    quint8 rating = 0; // stars x 20
    quint32 playCount = 0;
    quint32 lastPlayed = 0; // Mac epoch seconds
    quint32 skipCount = 0;  // written only with a header of 160 bytes or more
    quint64 dbId = 0;       // at +112
    quint32 artworkId = 0;  // at +352: written only with a header of 0x184 bytes or more (0x248 as iTunes 7.4)
    QList<StringObject> strings;
    quint32 headerLength = 0xF4;
    std::optional<quint32> stringCount;
    std::optional<quint32> totalLength;

    // A track with the usual UTF-16 strings; empty texts are left out.
    static TrackItem song(quint32 id, const QString &title, const QString &artist, const QString &ipodPath,
                          quint32 totalTimeMs = 200000);
};

struct PlaylistEntry {
    quint32 trackId = 0;
    quint32 headerLength = 0x4C;
    quint32 idOffset = 24;           // where the id is written: 24, 20 or 16
    bool withPositionObject = true;  // real files follow each entry's header with a type-100 object
    std::optional<quint32> totalLength;
};

struct PlaylistItem {
    std::optional<QString> name; // none: no title object at all
    bool isMaster = false;
    quint64 dbId = 0;
    bool isFolder = false;  // iTunes 7 playlist folders: a flag at +0x2A...
    quint64 parentDbId = 0; // ...and the parent folder's id at +0x30 in each child
    QList<PlaylistEntry> entries;
    QList<StringObject> extraObjects; // written after the title object, e.g. smart markers
    quint32 headerLength = 0x6C;
    std::optional<quint32> stringCount;
    std::optional<quint32> entryCount;
    std::optional<quint32> totalLength;

    static PlaylistItem of(const QString &name, const QList<quint32> &trackIds, quint64 dbId = 0);
};

QByteArray mhod(const StringObject &object);
QByteArray mhit(const TrackItem &track);
QByteArray mhip(const PlaylistEntry &entry);
QByteArray mhyp(const PlaylistItem &playlist);
QByteArray mhlt(const QList<QByteArray> &items, quint32 headerLength = 0x5C, std::optional<quint32> count = {});
QByteArray mhlp(const QList<QByteArray> &items, quint32 headerLength = 0x5C, std::optional<quint32> count = {});
QByteArray mhsd(quint32 type, const QByteArray &body, quint32 headerLength = 0x60,
                std::optional<quint32> totalLength = {});
QByteArray mhbd(const QList<QByteArray> &sections, quint32 headerLength = 0x68,
                std::optional<quint32> sectionCount = {});

// An On-The-Go playlist file ("mhpo"): one index into the track list, in file order, per entry.
QByteArray onTheGoFile(const QList<quint32> &indexes, std::optional<quint32> count = {});

// A "Play Counts" file ("mhdp") with entries of `entryLength` bytes (12, 16 or 28 and more): plays, last
// played, a bookmark, the rating and, at +20, skips; each entry only as far as its length reaches.
struct PlayCountItem {
    quint32 plays = 0;
    quint32 lastPlayed = 0;
    quint32 rating = 0;
    quint32 skips = 0;
};
QByteArray playCountsFile(const QList<PlayCountItem> &entries, quint32 entryLength = 28);

// A whole database: a track section, then the playlist section (optionally also written as the
// podcast section, type 3, before it, as iTunes does).
class ITunesDBWriter {
public:
    ITunesDBWriter &addTrack(TrackItem track);
    ITunesDBWriter &addPlaylist(PlaylistItem playlist);
    ITunesDBWriter &withPodcastSection(bool enabled = true);

    [[nodiscard]] QByteArray build() const;

private:
    QList<TrackItem> m_tracks;
    QList<PlaylistItem> m_playlists;
    bool m_podcastSection = false;
};

} // namespace kestrune::dbwriter
