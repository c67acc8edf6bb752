#pragma once

#include <QString>

namespace kestrune {

// Unicode white space plus line and paragraph separators, removed from both ends.
QString trimmedWhitespaceAndNewlines(const QString &text);

// The last component of a '/'-separated path, ignoring trailing slashes; "" when there is none.
QString lastSlashComponent(const QString &path);

} // namespace kestrune
