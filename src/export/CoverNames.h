#pragma once

#include "core/Track.h"

#include <QString>

namespace kestrune {

// The file name (without extension) under which Rockbox looks up a track's cover in its central
// /.rockbox/albumart/ folder: "<album artist, else artist>-<album>", from the tags with trailing white
// space trimmed as Rockbox's tag reader trims them, `"` becoming `'` and each of * / : < > ? \ | becoming
// `_`, exactly as the player changes them.
struct CoverNaming {
    enum class Skip {
        none,
        noAlbumOrArtist,   // Rockbox never looks a cover up for this track
        tooLong,           // the whole path would pass the player's 259 bytes
        refusedCharacter,  // a control character, which FAT refuses in a name
    };
    QString name;
    Skip skip = Skip::none;
};

// `sizeSuffix` is "" for the generic file, or ".WxH" for the variant Rockbox tries first at that size.
[[nodiscard]] CoverNaming coverNameFor(const Track &track, const QString &sizeSuffix = {});

// The cover's path on the player, which must stay within 259 bytes.
[[nodiscard]] QString coverPlayerPath(const QString &fileName);

// What makes two cover names one file: Rockbox and FAT compare names ASCII-case-blind, every other
// character exactly.
[[nodiscard]] QString coverNameKey(const QString &name);

inline constexpr qsizetype longestPlayerPath = 259;

} // namespace kestrune
