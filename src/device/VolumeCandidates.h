#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace kestrune {

// The folders a scan inspects, in order; none when they cannot be listed (the scan then changes nothing).
using CandidateSource = std::function<std::optional<QStringList>()>;

// The entries of a folder, hidden ones left out: "/Volumes" on macOS, or any folder in tests and tools.
CandidateSource entriesOfFolder(const QString &folder);

// macOS: the entries of "/Volumes". Linux: the volumes a person sees (see isUserVisibleVolume).
// Elsewhere: the root paths of the mounted volumes.
CandidateSource systemCandidateSource();

} // namespace kestrune
