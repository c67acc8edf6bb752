#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace kestrune {

// Creates the folder with any missing parents. Returns the system's description on failure.
std::optional<QString> createFolder(const QString &path);

// Writes `bytes` to `path` through a temporary file in the same folder that then replaces the target.
// Unless every byte reached the disk the target is left as it was and no temporary file remains. A target
// that is a symbolic link is replaced, never written through.
// Returns the system's description on failure.
std::optional<QString> writeFileAtomically(const QString &path, const QByteArray &bytes);

} // namespace kestrune
