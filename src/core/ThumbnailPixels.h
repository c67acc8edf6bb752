#pragma once

#include "ArtworkDatabase.h"
#include "RgbPicture.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace kestrune {

// The part of a thumbnail's frame its picture fills: (width - |hpad|) x (height - |vpad|) pixels from
// (max(hpad, 0), max(vpad, 0)), clipped to the frame. None when nothing of it is inside.
struct PictureArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const PictureArea &) const = default;
};
[[nodiscard]] std::optional<PictureArea> pictureArea(const CoverFormat &format, const ThumbnailLocation &thumbnail);

// Whether a frame of RGB565 pixels (rows of the format's width x 2 bytes) reaches the area's last pixel.
[[nodiscard]] bool frameHoldsArea(QByteArrayView frame, const CoverFormat &format, const PictureArea &area);


// The picture of a frame of RGB565 little-endian pixels (rows of the format's width x 2 bytes), widened
// as the iPod's own software does: red and blue shifted left by 3, green by 2. None when `frame` is
// shorter than the area's last row needs.
[[nodiscard]] std::optional<RgbPicture> decodeThumbnail(QByteArrayView frame, const CoverFormat &format,
                                                        const PictureArea &area);

// A hash of the area's pixels and its size, the same on every platform and in every release: what tells
// two covers apart, and whether a cover's source changed since it was written. None as decodeThumbnail().
[[nodiscard]] std::optional<quint64> pictureHash(QByteArrayView frame, const CoverFormat &format,
                                                 const PictureArea &area);

} // namespace kestrune
