#include "Measure.h"

#include <QFile>
#include <QRegularExpression>

namespace kestrune::bench {

namespace {

qint64 statusField(const char *name)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QRegularExpression line(QStringLiteral("^%1:\\s+(\\d+) kB").arg(QLatin1StringView(name)),
                                  QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = line.match(QString::fromLatin1(status.readAll()));
    return match.hasMatch() ? match.captured(1).toLongLong() * 1024 : 0;
}

} // namespace

qint64 peakResidentBytes()
{
    return statusField("VmHWM");
}

qint64 residentBytes()
{
    return statusField("VmRSS");
}

} // namespace kestrune::bench
