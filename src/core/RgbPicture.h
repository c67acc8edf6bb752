#pragma once

#include <QByteArray>

namespace kestrune {

// A picture as 8-bit red, green, blue triples, rows packed: what covers are decoded to and encoded from.
struct RgbPicture {
    int width = 0;
    int height = 0;
    QByteArray rgb;

    bool operator==(const RgbPicture &) const = default;
};

} // namespace kestrune
