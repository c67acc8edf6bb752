#pragma once

#include "CliOutput.h"
#include "core/ParseResult.h"
#include "export/CoverRun.h"

#include <QJsonObject>
#include <QSize>

#include <optional>

namespace kestrune::cli {

// How a cover run is told: a line per cover file, then a summary with what was skipped and why; or the
// same as JSON, every cover with its "status".
void printCoverRun(const CoverRunReport &report, const QString &folder, bool dryRun, CliOutput &output);
[[nodiscard]] QJsonObject coverRunJson(const CoverRunReport &report, const QString &folder);

// 1 when the step or a cover failed, else 0 (a step that does not apply is no failure).
[[nodiscard]] int coverRunStatus(const CoverRunReport &report);

// "120x120" as a size; none for anything else.
[[nodiscard]] std::optional<QSize> coverSizeOption(const QString &text);

// The cover step on a device whose root the caller holds locked, with progress on standard error.
[[nodiscard]] CoverRunReport runCoverStep(const QString &deviceRoot, const DeviceFolder &lockedRoot,
                                          const ParseResult &library, CoverRunRequest request, CliOutput &output);

} // namespace kestrune::cli
