#pragma once

#include "core/Playlist.h"
#include "export/ExportItemResult.h"
#include "export/RockboxFileItem.h"

#include <QJsonObject>

namespace kestrune::cli {

// JSON shapes of the command-line tool. Keys are the values' field names; URLs are local paths, dates
// ISO 8601, and 64-bit database ids decimal strings so that they stay exact.
QJsonObject trackJson(const Track &track);
QJsonObject playlistJson(const Playlist &playlist);
QJsonObject exportResultJson(const ExportItemResult &result);
QJsonObject fileItemJson(const RockboxFileItem &item);

} // namespace kestrune::cli
