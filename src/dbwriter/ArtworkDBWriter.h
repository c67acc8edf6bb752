#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

#include <optional>

// Assembles an iPod's artwork database (iPod_Control/Artwork/ArtworkDB) and its thumbnail files from
// plain descriptions, for tests, benchmarks and fuzz seeds. Every length or count can be overridden to
// describe a damaged file.
namespace kestrune::dbwriter {

struct ArtworkThumbnail {
    quint32 formatId = 0;
    QString file; // as the database names it, e.g. ":F1060_1.ithmb"
    quint32 offset = 0;
    quint32 size = 0;
    qint16 verticalPadding = 0;
    qint16 horizontalPadding = 0;
    qint16 height = 0; // top padding included
    qint16 width = 0;  // left padding included
    bool utf16Name = true;
    std::optional<quint32> nameLength; // the stored string length; defaults to the name's
};

struct ArtworkImageItem {
    quint32 imageId = 0;
    quint64 songId = 0;
    QList<ArtworkThumbnail> thumbnails;
    std::optional<quint32> childCount;
    std::optional<quint32> totalLength;
};

// The whole file: an image list, an empty album list and the file list of the formats used.
QByteArray artworkDatabase(const QList<ArtworkImageItem> &images, std::optional<quint32> imageCount = {},
                           std::optional<quint32> totalLength = {});

// A pixel as the iPod stores it: red in bits 15-11, green 10-5, blue 4-0.
constexpr quint16 rgb565(int red, int green, int blue)
{
    return quint16(((red >> 3) << 11) | ((green >> 2) << 5) | (blue >> 3));
}

// Pictures placed in their formats' frames as the iPod's own software places them (centred, the padding
// left black), appended to one thumbnail file per format ("F<id>_1.ithmb").
class ArtworkWriter {
public:
    // A picture of width x height RGB565 pixels, row by row.
    struct Picture {
        int width = 0;
        int height = 0;
        QList<quint16> pixels;

        // Each pixel from its column and row.
        template <typename Colour> static Picture filled(int width, int height, Colour colour)
        {
            Picture picture{width, height, {}};
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x)
                    picture.pixels.append(colour(x, y));
            }
            return picture;
        }
    };

    // Adds an image for the track with `songId`, with one thumbnail per (format id, frame width, frame
    // height, picture); gives the image id (from 100 up).
    struct Thumbnail {
        quint32 formatId;
        int frameWidth;
        int frameHeight;
        Picture picture;
    };
    quint32 addImage(quint64 songId, const QList<Thumbnail> &thumbnails);

    [[nodiscard]] QByteArray database() const { return artworkDatabase(m_images); }
    // Thumbnail files by name ("F1060_1.ithmb").
    [[nodiscard]] const QMap<QString, QByteArray> &thumbnailFiles() const { return m_files; }
    [[nodiscard]] QList<ArtworkImageItem> &images() { return m_images; }

private:
    QList<ArtworkImageItem> m_images;
    QMap<QString, QByteArray> m_files;
};

} // namespace kestrune::dbwriter
