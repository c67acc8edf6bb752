#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace kestrune {

// Creates the folder with any missing parents. Returns the system's description on failure.
std::optional<QString> createFolder(const QString &path);

// Writes `bytes` to `path` through a temporary file in the same folder that then replaces the target.
// Unless every byte was written the target is left as it was and no temporary file remains. A target
// that is a symbolic link is replaced, never written through. Returns the system's description on failure.
std::optional<QString> writeFileAtomically(const QString &path, const QByteArray &bytes);

// Makes everything written so far on the folder's volume durable: one flush for a whole run, rather than
// one per file, which on a slow device costs seconds.
void flushToDisk(const QString &folder);

} // namespace kestrune
