#pragma once

#include "ConversionOptions.h"
#include "core/Playlist.h"

#include <QString>

namespace kestrune {

// The complete text of a Rockbox playlist file: "\n" line ends, a final "\n", no byte-order mark.
QString m3uContent(const Playlist &playlist, const ConversionOptions &options);

// The path line of one track: its device path, with the custom prefix in front when there is one.
QString m3uPathLine(const Track &track, const QString &customPathPrefix);
// The size in UTF-8 of that line, as written; without a prefix it is counted without building the line.
qsizetype m3uPathLineUtf8Size(const Track &track, const QString &customPathPrefix);

// "#EXTINF:<whole seconds>,<artist> - <title>", or without the artist when it is blank or "Unknown Artist".
QString m3uInfoLine(const Track &track);

} // namespace kestrune
