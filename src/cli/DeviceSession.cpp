#include "DeviceSession.h"

#include "Interruption.h"

namespace kestrune::cli {

std::optional<DeviceLock> lockDevice(const WriteScope &scope, const QString &command, CliOutput &output,
                                     int &failureStatus)
{
    if (!scope.root.isOpen()) {
        failureStatus = output.fail(QStringLiteral("%1: %2").arg(command, scope.root.error().value_or(QString())),
                                    exitUsageOrInput, scope.root.path());
        return std::nullopt;
    }
    bool waitOk = false;
    const int waitMs = qEnvironmentVariableIntValue("KESTRUNE_LOCK_WAIT_MS", &waitOk);
    std::variant<DeviceLock, QString> lock =
        DeviceLock::acquire(scope.root, std::chrono::milliseconds(waitOk ? waitMs : 5000), [&](const QString &holder) {
            output.note(QStringLiteral("%1 is in use by %2; waiting...").arg(scope.root.path(), holder));
        });
    if (QString *busy = std::get_if<QString>(&lock)) {
        failureStatus = output.fail(QStringLiteral("%1: %2").arg(command, *busy), exitSomeFailed, scope.root.path());
        return std::nullopt;
    }
    return std::move(std::get<DeviceLock>(lock));
}

int reportStop(qsizetype written, qsizetype total, const QString &what, CliOutput &output)
{
    const qsizetype left = total - written;
    output.note(QStringLiteral("stopped by %1: %2 of %3 %4 written; %5 left as %6")
                    .arg(stoppingSignalName())
                    .arg(written)
                    .arg(total)
                    .arg(what)
                    .arg(left)
                    .arg(left == 1 ? QStringLiteral("it was") : QStringLiteral("they were")));
    return stoppedExitStatus();
}

} // namespace kestrune::cli
