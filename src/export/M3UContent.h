#pragma once

#include "ConversionOptions.h"
#include "core/Playlist.h"

#include <QString>

#include <optional>

namespace kestrune {

// The complete text of a Rockbox playlist file: "\n" line ends, a final "\n", no byte-order mark.
QString m3uContent(const Playlist &playlist, const ConversionOptions &options);

// The path line of one track: its device path, with the custom prefix in front when there is one.
QString m3uPathLine(const Track &track, const QString &customPathPrefix);
// The size in UTF-8 of that line, as written; without a prefix it is counted without building the line.
qsizetype m3uPathLineUtf8Size(const Track &track, const QString &customPathPrefix);

// Why a path prefix cannot be used: it holds a control character (below U+0020, or DEL), which would
// break every entry's line or put an invisible character in it. Names the first one, as "U+000A (line
// feed)"; none when the prefix is fine.
std::optional<QString> controlCharacterInPrefix(const QString &prefix);

// "#EXTINF:<whole seconds>,<artist> - <title>", or without the artist when it is blank or "Unknown Artist".
QString m3uInfoLine(const Track &track);

} // namespace kestrune
