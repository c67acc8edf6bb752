#pragma once

#include <QString>

#include <optional>

namespace kestrune {

// The root of the iPod tree a path lies in: the path itself or the nearest folder above it that holds
// "iPod_Control". None when the path is not on an iPod (or a copy of one).
std::optional<QString> enclosingIPodRoot(const QString &path);

} // namespace kestrune
