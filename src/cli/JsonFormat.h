#pragma once

#include "core/Playlist.h"
#include "export/DotFileCleaner.h"
#include "export/ExportItemResult.h"
#include "export/RockboxFileItem.h"

#include <QJsonObject>
#include <QTextStream>

namespace kestrune::cli {

// JSON shapes of the command-line tool. Keys are the values' field names; URLs are local paths, dates
// ISO 8601, and 64-bit database ids decimal strings so that they stay exact.
QJsonObject trackJson(const Track &track);
QJsonObject playlistJson(const Playlist &playlist);
QJsonObject exportResultJson(const ExportItemResult &result);
QJsonObject fileItemJson(const RockboxFileItem &item);
// A cleaning's count, with its failures, the mounts it left alone and a refusal when there are any.
QJsonObject cleaningJson(const DotFileCleaner::Report &report);
// The same as lines: each file that could not be removed with its reason, each mount left alone.
void printCleaningProblems(const DotFileCleaner::Report &report, QTextStream &out);

} // namespace kestrune::cli
