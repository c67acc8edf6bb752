#pragma once

#include "CliOutput.h"
#include "export/DeviceLock.h"
#include "export/WriteScope.h"

#include <optional>

namespace kestrune::cli {

// The device's lock for a writing command: taken once on the scope's root, waiting a few seconds
// (KESTRUNE_LOCK_WAIT_MS, for tests) while another run holds it, with one line naming that run. Reports
// a failure and gives none, with the status to exit with in `failureStatus` (busy: 1; a root that cannot
// be reached: 2).
std::optional<DeviceLock> lockDevice(const WriteScope &scope, const QString &command, CliOutput &output,
                                     int &failureStatus);

// After a stop by signal: the one line saying what was and was not written; gives the status to exit with.
int reportStop(qsizetype written, qsizetype total, const QString &what, CliOutput &output);

} // namespace kestrune::cli
