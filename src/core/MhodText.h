#pragma once

#include <QByteArrayView>
#include <QString>

namespace kestrune {

// The decode chains of a string object's text, before trimming.
// Structured form: UTF-8 when flagged, else UTF-16LE; then UTF-8, Mac OS Roman, Latin-1, Windows-1252;
// the first non-empty result wins.
QString decodeStructuredMhodText(QByteArrayView bytes, bool flaggedUtf8);
// Raw form (no string header): UTF-16LE, then UTF-8, then Mac OS Roman; the first that decodes wins.
QString decodeRawMhodText(QByteArrayView bytes);

// True when these bytes, read as UTF-16LE, are text that decoding and trimming would give back unchanged:
// an even number of bytes, at least two, no surrogates, and no trimmed character at either end. Only on a
// little-endian machine, where such bytes are the string's own representation.
bool isPlainUtf16Text(QByteArrayView bytes);

// NUL, byte-order mark, replacement character, CR, LF, tab or space: what trimming removes.
bool isMhodTrimmed(QChar c);
// Removes NUL, byte-order marks, replacement characters, CR, LF, tab and space from both ends.
QString trimMhodText(const QString &text);

} // namespace kestrune
