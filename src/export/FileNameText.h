#pragma once

#include <QByteArray>
#include <QString>

namespace kestrune {

// A file name's bytes as text a person can read and a program can round-trip: valid UTF-8 as it is, each
// byte that is not part of valid UTF-8 as "\xNN".
[[nodiscard]] QString displayFileName(const QByteArray &bytes);

[[nodiscard]] bool isValidUtf8(const QByteArray &bytes);

} // namespace kestrune
