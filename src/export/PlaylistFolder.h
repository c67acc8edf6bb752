#pragma once

#include "RockboxFileItem.h"
#include "core/ExistingRockboxFile.h"

#include <QList>
#include <QString>

namespace kestrune {

// The playlist files (".m3u", ".m3u8", any case) directly in a folder, hidden entries and sub-folders left
// out, sorted by file name as a file browser sorts. A missing or unreadable folder gives an empty list.
QList<RockboxFileItem> listPlaylistFiles(const QString &folder);
QList<ExistingRockboxFile> scanExistingPlaylistFiles(const QString &folder);

} // namespace kestrune
