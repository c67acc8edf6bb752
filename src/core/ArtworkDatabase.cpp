#include "ArtworkDatabase.h"

#include "BinaryReader.h"

#include <QStringDecoder>

#include <array>

namespace kestrune {

std::optional<CoverFormat> knownCoverFormat(quint32 formatId)
{
    static constexpr std::array formats{
        CoverFormat{1017, 56, 56},   CoverFormat{1016, 140, 140}, // Photo, Color
        CoverFormat{1031, 42, 42},   CoverFormat{1027, 100, 100}, // nano 1G, 2G
        CoverFormat{1028, 100, 100}, CoverFormat{1029, 200, 200}, // Video
        CoverFormat{1061, 56, 56},   CoverFormat{1055, 128, 128}, // Classic, nano 3G
        CoverFormat{1068, 128, 128}, CoverFormat{1060, 320, 320},
    };
    for (const CoverFormat &format : formats) {
        if (format.id == formatId)
            return format;
    }
    return std::nullopt;
}

const ArtworkImage *ArtworkDatabase::imageFor(quint64 trackDbId, quint32 artworkLink) const
{
    if (artworkLink != 0) {
        const auto found = indexByImageId.constFind(artworkLink);
        return found == indexByImageId.cend() ? nullptr : &images.at(*found);
    }
    const auto found = indexBySongId.constFind(trackDbId);
    return trackDbId == 0 || found == indexBySongId.cend() ? nullptr : &images.at(*found);
}

namespace {

// A chunk's place: [begin, begin + headerLength) is its header, and for the chunks that have one,
// [begin, end) everything it holds.
struct Chunk {
    qsizetype begin = 0;
    qsizetype headerLength = 0;
    qsizetype end = 0;
    quint32 word8 = 0; // the item count of a list chunk
};

class ArtworkWalk {
public:
    explicit ArtworkWalk(const QByteArray &bytes) : m_reader(bytes) {}

    ArtworkParse run()
    {
        ArtworkDatabase database;
        const std::optional<Chunk> file = chunkAt(0, m_reader.size(), "mhfd", 24, true);
        if (!file)
            return failure();
        if (file->end < m_reader.size())
            m_reader = BinaryReader(m_reader.data().left(file->end));
        const quint32 sections = wordAt(file->begin + 20);
        qsizetype at = file->headerLength;
        for (quint32 i = 0; i < sections && at < file->end; ++i) {
            const std::optional<Chunk> section = chunkAt(at, file->end, "mhsd", 14, true);
            if (!section)
                return failure();
            if (halfWordAt(at + 12) == 1 && !readImages(*section, database))
                return failure();
            at = section->end;
        }
        return ArtworkParse{.database = std::move(database), .error = {}};
    }

private:
    bool readImages(const Chunk &section, ArtworkDatabase &database)
    {
        const std::optional<Chunk> list = chunkAt(section.begin + section.headerLength, section.end, "mhli", 12, false);
        if (!list)
            return false;
        qsizetype at = list->begin + list->headerLength;
        for (quint32 i = 0; i < list->word8 && at < section.end; ++i) {
            const std::optional<Chunk> item = chunkAt(at, section.end, "mhii", 28, true);
            if (!item)
                return false;
            ArtworkImage image{.imageId = wordAt(at + 16), .songId = longWordAt(at + 20), .thumbnails = {}};
            if (!readThumbnails(*item, image))
                return false;
            database.indexByImageId.insert(image.imageId, database.images.size());
            if (!database.indexBySongId.contains(image.songId))
                database.indexBySongId.insert(image.songId, database.images.size());
            database.images.append(std::move(image));
            at = item->end;
        }
        return true;
    }

    bool readThumbnails(const Chunk &item, ArtworkImage &image)
    {
        const quint32 children = wordAt(item.begin + 12);
        qsizetype at = item.begin + item.headerLength;
        for (quint32 i = 0; i < children && at < item.end; ++i) {
            const std::optional<Chunk> child = chunkAt(at, item.end, "mhod", 14, true);
            if (!child)
                return false;
            if (halfWordAt(at + 12) == 2) {
                const std::optional<Chunk> thumbnail = chunkAt(at + child->headerLength, child->end, "mhni", 36, true);
                if (!thumbnail)
                    return false;
                if (std::optional<ThumbnailLocation> location = readThumbnail(*thumbnail))
                    image.thumbnails.append(std::move(*location));
            }
            at = child->end;
        }
        return true;
    }

    std::optional<ThumbnailLocation> readThumbnail(const Chunk &thumbnail)
    {
        const qsizetype at = thumbnail.begin;
        ThumbnailLocation location{.formatId = wordAt(at + 16),
                                   .file = {},
                                   .offset = wordAt(at + 20),
                                   .size = wordAt(at + 24),
                                   .verticalPadding = qint16(halfWordAt(at + 28)),
                                   .horizontalPadding = qint16(halfWordAt(at + 30)),
                                   .height = qint16(halfWordAt(at + 32)),
                                   .width = qint16(halfWordAt(at + 34))};
        // The file's name, in an mhod of type 3 right after the header.
        const qsizetype nameAt = at + thumbnail.headerLength;
        const std::optional<Chunk> name = chunkAt(nameAt, thumbnail.end, "mhod", 14, true);
        if (!name || halfWordAt(nameAt + 12) != 3 || name->end - nameAt < 36)
            return std::nullopt;
        const qsizetype length = wordAt(nameAt + 24);
        if (length > name->end - (nameAt + 36))
            return std::nullopt;
        m_reader.seek(nameAt + 36);
        const QByteArrayView bytes = *m_reader.readView(length);
        const quint8 encoding = quint8(halfWordAt(nameAt + 28) & 0xFF);
        const QString text = encoding == 2 ? QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.data()), length / 2)
                                           : QString::fromUtf8(bytes);
        // ":F1029_1.ithmb": ':' separates the components below iPod_Control/Artwork.
        QStringList components = text.split(u':', Qt::SkipEmptyParts);
        for (const QString &component : std::as_const(components)) {
            if (component == QLatin1StringView(".") || component == QLatin1StringView("..") ||
                component.contains(u'/') || component.contains(u'\\') || component.contains(QChar(0)))
                return std::nullopt;
        }
        if (components.isEmpty())
            return std::nullopt;
        location.file = components.join(u'/');
        return location;
    }

    // The chunk tagged `tag` at `begin`, whose header (at least `minimumHeader` bytes) and, when it has a
    // total length, whole extent lie inside [begin, end); none, with the reason noted, otherwise.
    std::optional<Chunk> chunkAt(qsizetype begin, qsizetype end, const char *tag, qsizetype minimumHeader,
                                 bool hasTotalLength)
    {
        m_reader.seek(begin);
        if (begin > end - minimumHeader || m_reader.readFourCC(QLatin1StringView(tag)) != BinaryReader::TagMatch::matches) {
            m_problem = QStringLiteral("no “%1” where one belongs at byte %2").arg(QLatin1StringView(tag)).arg(begin);
            return std::nullopt;
        }
        const qsizetype headerLength = *m_reader.readUInt32LE();
        const quint32 word8 = *m_reader.readUInt32LE();
        const qsizetype total = hasTotalLength ? qsizetype(word8) : headerLength;
        if (headerLength < minimumHeader || total < headerLength || total > end - begin) {
            m_problem = QStringLiteral("the “%1” at byte %2 does not fit in the file").arg(QLatin1StringView(tag)).arg(begin);
            return std::nullopt;
        }
        return Chunk{.begin = begin, .headerLength = headerLength, .end = hasTotalLength ? begin + total : end, .word8 = word8};
    }

    // Fields within a header chunkAt() has checked.
    quint32 wordAt(qsizetype at)
    {
        m_reader.seek(at);
        return m_reader.readUInt32LE().value_or(0);
    }
    quint64 longWordAt(qsizetype at)
    {
        m_reader.seek(at);
        return m_reader.readUInt64LE().value_or(0);
    }
    quint16 halfWordAt(qsizetype at)
    {
        m_reader.seek(at);
        return m_reader.readUInt16LE().value_or(0);
    }

    ArtworkParse failure() const
    {
        return ArtworkParse{.database = std::nullopt,
                            .error = QStringLiteral("The artwork database is damaged: %1.").arg(m_problem)};
    }

    BinaryReader m_reader;
    QString m_problem;
};

} // namespace

ArtworkParse parseArtworkDatabase(const QByteArray &bytes)
{
    return ArtworkWalk(bytes).run();
}

} // namespace kestrune
