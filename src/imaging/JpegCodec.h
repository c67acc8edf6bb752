#pragma once

#include "core/RgbPicture.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace kestrune {

// A baseline JPEG of the picture (one interleaved scan, Huffman coding, no progressive mode: what
// Rockbox's decoder accepts), at the given quality, with colour at full resolution (4:4:4) or at half
// resolution each way (4:2:0, about a third faster to encode); none when the picture is empty or the
// encoder fails.
enum class Colour { full, half };
[[nodiscard]] std::optional<QByteArray> encodeBaselineJpeg(const RgbPicture &picture, Colour colour, int quality = 92);

// A JPEG file's picture; none when it is not one.
[[nodiscard]] std::optional<RgbPicture> decodeJpeg(QByteArrayView bytes);

// Whether the bytes are a JPEG Rockbox can decode: a baseline frame (SOF0) of 8-bit samples, 1 or 3
// components, before the first scan.
[[nodiscard]] bool isBaselineJpeg(QByteArrayView bytes);

} // namespace kestrune
