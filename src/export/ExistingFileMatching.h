#pragma once

#include "core/ExistingRockboxFile.h"
#include "core/Playlist.h"

#include <QList>
#include <QSet>
#include <QStringList>

#include <optional>

namespace kestrune {

// The existing file a library playlist maps to: the first file, in the given order, whose base name, or
// whose name less ".m3u8" or ".m3u", equals the sanitised playlist name, case-blind, with canonically
// equivalent texts counted equal. The name is always sanitised here, whatever the export options say,
// so that it agrees with the file an export would write.
std::optional<ExistingRockboxFile> matchingExistingFile(const QString &playlistName,
                                                        const QList<ExistingRockboxFile> &files);

// Sets (or clears) every playlist's existingRockboxFile by the rule above, each playlist under the name an
// export of them all would give it: names that are one on a case-blind volume get " (2)", " (3)", ...
void attachExistingFiles(QList<Playlist> &playlists, const QList<ExistingRockboxFile> &files);

// Whether a file belongs to one of some playlists by the rule above, a part written by splitting
// ("Name (2 of 3)") included. The playlists' keys are prepared once for a whole folder.
QSet<QString> playlistMatchKeys(const QStringList &playlistNames);
bool belongsToAny(const ExistingRockboxFile &file, const QSet<QString> &playlistKeys);

} // namespace kestrune
