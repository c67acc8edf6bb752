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

// Removes NUL, byte-order marks, replacement characters, CR, LF, tab and space from both ends.
QString trimMhodText(const QString &text);

} // namespace kestrune
