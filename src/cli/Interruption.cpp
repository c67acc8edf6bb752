#include "Interruption.h"

#include <csignal>

namespace kestrune::cli {

namespace {

std::atomic<bool> requested{false};
volatile std::sig_atomic_t stoppingSignal = 0;

extern "C" void requestStop(int signal)
{
    stoppingSignal = signal;
    requested.store(true);
}

} // namespace

void stopOnSignals()
{
#ifdef Q_OS_UNIX
    struct sigaction action {};
    action.sa_handler = requestStop;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::sigaction(signal, &action, nullptr);
#else
    std::signal(SIGINT, requestStop);
    std::signal(SIGTERM, requestStop);
#endif
}

const std::atomic<bool> &stopRequested()
{
    return requested;
}

QString stoppingSignalName()
{
    switch (stoppingSignal) {
    case SIGINT:
        return QStringLiteral("SIGINT");
    case SIGTERM:
        return QStringLiteral("SIGTERM");
#ifdef SIGHUP
    case SIGHUP:
        return QStringLiteral("SIGHUP");
#endif
    default:
        return QStringLiteral("a signal");
    }
}

int stoppedExitStatus()
{
    return 128 + int(stoppingSignal);
}

} // namespace kestrune::cli
