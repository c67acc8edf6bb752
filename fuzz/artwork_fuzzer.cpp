// Feeds arbitrary bytes to the artwork database reader, then uses the same bytes as the thumbnail file
// of every thumbnail it found: a result or a reason every time, no name leaving the artwork folder, and
// no pixel read outside the bytes.
#include "core/ArtworkDatabase.h"
#include "core/ThumbnailPixels.h"

#include <cstdint>
#include <cstdlib>

using namespace kestrune;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const ArtworkParse parse = parseArtworkDatabase(bytes);
    if (parse.database.has_value() == !parse.error.isEmpty())
        std::abort();
    if (!parse.database)
        return 0;
    // Each image and thumbnail takes bytes of its own: their number is bounded by the file's size.
    if (parse.database->images.size() > bytes.size() / 28)
        std::abort();
    for (const ArtworkImage &image : parse.database->images) {
        for (const ThumbnailLocation &thumbnail : image.thumbnails) {
            if (thumbnail.file.split(u'/').contains(QStringLiteral("..")) || thumbnail.file.startsWith(u'/'))
                std::abort();
            const std::optional<CoverFormat> format = knownCoverFormat(thumbnail.formatId);
            const std::optional<PictureArea> area = format ? pictureArea(*format, thumbnail) : std::nullopt;
            if (!area || thumbnail.offset > quint32(bytes.size()))
                continue;
            const QByteArrayView frame = QByteArrayView(bytes).sliced(thumbnail.offset);
            const std::optional<RgbPicture> picture = decodeThumbnail(frame, *format, *area);
            if (picture && picture->rgb.size() != qsizetype(area->width) * area->height * 3)
                std::abort();
            if (picture.has_value() != pictureHash(frame, *format, *area).has_value())
                std::abort();
        }
    }
    return 0;
}
