#pragma once

#include <QString>

#include <atomic>

namespace kestrune::cli {

// Ctrl+C, SIGTERM and SIGHUP do not kill a run on the spot: they ask it to stop, and the run abandons what
// it has not yet put in place (its temporary files go, old files stay), finishes the renames it began,
// says what was and was not written, and exits with 128 + the signal's number.
void stopOnSignals();

// Turns true when one of those signals arrives; the writers read it between steps.
const std::atomic<bool> &stopRequested();

// The signal that asked to stop ("SIGINT"), and the status to exit with; only after stopRequested().
QString stoppingSignalName();
int stoppedExitStatus();

} // namespace kestrune::cli
