#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace kestrune {

enum class TextEncoding { utf8, utf16LE, ascii, macOSRoman, isoLatin1, windows1252 };

// Decodes bytes that are valid in the encoding; "no value" when they are not.
// Invalid UTF-8 and UTF-16 with unpaired surrogates fail; a leading byte-order mark is kept as U+FEFF.
// Mac OS Roman, Latin-1 and Windows-1252 map every byte, so they always decode.
std::optional<QString> decodeText(QByteArrayView bytes, TextEncoding encoding);

} // namespace kestrune
