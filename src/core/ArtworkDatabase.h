#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

namespace kestrune {

// A thumbnail format of the iPod's artwork: every thumbnail of it is a full frame of width x height
// RGB565 pixels, rows of width x 2 bytes.
struct CoverFormat {
    quint32 id = 0;
    int width = 0;
    int height = 0;

    bool operator==(const CoverFormat &) const = default;
};

// The cover formats of the iPods with a colour screen (Photo, nano, Video, Classic); none for another id.
[[nodiscard]] std::optional<CoverFormat> knownCoverFormat(quint32 formatId);

// Where one thumbnail of an image lies and which part of its frame the picture fills. `width` and
// `height` include the padding on the left and at the top; a negative padding means the picture was cut
// there.
struct ThumbnailLocation {
    quint32 formatId = 0;
    QString file; // below iPod_Control/Artwork, components joined by '/', e.g. "F1029_1.ithmb"
    quint32 offset = 0;
    quint32 size = 0;
    qint16 verticalPadding = 0;
    qint16 horizontalPadding = 0;
    qint16 height = 0;
    qint16 width = 0;

    bool operator==(const ThumbnailLocation &) const = default;
};

// One image of the artwork database: its id (what a track's artwork link names), the persistent id of a
// track that carries it, and one thumbnail per size.
struct ArtworkImage {
    quint32 imageId = 0;
    quint64 songId = 0;
    QList<ThumbnailLocation> thumbnails;

    bool operator==(const ArtworkImage &) const = default;
};

// What iPod_Control/Artwork/ArtworkDB says. Counts and lengths in the file are not trusted: each chunk
// must lie inside its parent, the walk only moves forward, and no more items are read than the bytes
// can hold, so a damaged or hostile file costs time linear in its size.
struct ArtworkDatabase {
    QList<ArtworkImage> images; // in file order

    // The image a track shows: the one its artwork link names when it has one (a link to no image means
    // no cover), else the one whose song id is the track's persistent id.
    [[nodiscard]] const ArtworkImage *imageFor(quint64 trackDbId, quint32 artworkLink) const;

    QHash<quint32, qsizetype> indexByImageId;
    QHash<quint64, qsizetype> indexBySongId; // the first image naming each song id
};

struct ArtworkParse {
    std::optional<ArtworkDatabase> database;
    QString error; // why there is none, for a person to read
};

[[nodiscard]] ArtworkParse parseArtworkDatabase(const QByteArray &bytes);

} // namespace kestrune
