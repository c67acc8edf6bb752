#pragma once

#include "core/RgbPicture.h"

#include <QSize>

namespace kestrune {

// The size of a picture fitted into a box keeping its aspect ratio, as Rockbox fits a cover into the
// theme's box: at least one pixel each way.
[[nodiscard]] QSize fittedSize(QSize picture, QSize box);

// The picture scaled to exactly `size`: area averaging where it shrinks (every source pixel counts by
// the part of it each target pixel covers), linear interpolation where it grows.
[[nodiscard]] RgbPicture scaledPicture(const RgbPicture &picture, QSize size);

} // namespace kestrune
