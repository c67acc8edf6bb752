#pragma once

#include "ConversionOptions.h"
#include "core/Playlist.h"

#include <QString>

namespace kestrune {

// The complete text of a Rockbox playlist file: "\n" line ends, a final "\n", no byte-order mark.
QString m3uContent(const Playlist &playlist, const ConversionOptions &options);

// The path line of one track: its device path, with the custom prefix in front when there is one.
QString m3uPathLine(const Track &track, const QString &customPathPrefix);

// "#EXTINF:<whole seconds>,<artist> - <title>", or without the artist when it is blank or "Unknown Artist".
QString m3uInfoLine(const Track &track);

} // namespace kestrune
