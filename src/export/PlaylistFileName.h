#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace kestrune {

// The longest base name that keeps "/Playlists/NAME.m3u8" within Rockbox's path limit of 259 bytes of
// UTF-8 (its MAX_PATH is 260 with the terminating NUL).
constexpr qsizetype maximumBaseNameBytes = 259 - qsizetype(sizeof("/Playlists/.m3u8") - 1);

// A playlist name made safe as a file name on the player's FAT volume and on Windows:
// - each of : / \ | * ? < > " becomes one "_", then outer white space goes, and "" becomes "Playlist";
// - other control characters (C0, DEL) become "_", and so does a leading ".", which would hide the file;
// - a reserved Windows device name (CON, PRN, AUX, NUL, COM1-9, LPT1-9, any case, with or without an
//   extension) gets "_" after it;
// - the name is shortened at a character boundary to maximumBaseNameBytes.
QString sanitizedPlaylistName(const QString &name);

// Base names made distinct on a case-blind volume: names equal after NFC and Unicode case folding (which
// covers FAT's comparison and the player's ASCII-only one) would be one file there. The first, in the
// given order, keeps its name; the next gets " (2)", then " (3)", ... (shortened, when `limitLength`, to
// stay within maximumBaseNameBytes).
// A playlist's `preferred` name (the one it had in an earlier run) is kept when it is still one of its own
// name's forms (the name, or the name with a suffix) and no playlist before it has taken it.
QStringList distinctBaseNames(const QStringList &baseNames, bool limitLength,
                              const QList<std::optional<QString>> &preferred = {});

// The key under which two file names are one file on a case-blind volume.
QString caseBlindKey(const QString &name);

// A name used as it is (sanitising off) still may not hold a character that no file name can hold:
// the reason, naming the character, or none.
std::optional<QString> unwritableCharacterIn(const QString &name);

// The first character of a file name that a FAT volume refuses, described for a message; none when
// every character is acceptable.
std::optional<QString> describeFatRefusedCharacter(const QString &fileName);

} // namespace kestrune
