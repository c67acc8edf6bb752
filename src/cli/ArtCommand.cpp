// `art`: the covers iTunes put on the iPod, written where Rockbox looks them up.
#include "Commands.h"
#include "CoverRunOutput.h"
#include "DeviceSession.h"
#include "Interruption.h"
#include "SourceDatabase.h"
#include "core/ArtworkLibrary.h"

#include <QRegularExpression>

namespace kestrune::cli {

std::optional<QSize> coverSizeOption(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("^([1-9][0-9]{0,3})x([1-9][0-9]{0,3})$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    return QSize(match.captured(1).toInt(), match.captured(2).toInt());
}

CoverRunReport runCoverStep(const QString &deviceRoot, const DeviceFolder &lockedRoot, const ParseResult &library,
                            CoverRunRequest request, CliOutput &output)
{
    const ArtworkLibrary artwork = ArtworkLibrary::open(deviceRoot);
    request.tracks = library.tracksInOrder();
    const CoverRunReport report = runCovers(
        lockedRoot, artwork, request,
        [&](qsizetype done, qsizetype total) { output.progress(QStringLiteral("[%1/%2] covers").arg(done).arg(total)); },
        &stopRequested());
    output.endProgress();
    return report;
}

int runArt(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    parser.addOptions({QCommandLineOption(QStringLiteral("dry-run")),
                       QCommandLineOption(QStringLiteral("size"), QString(), QStringLiteral("WxH")),
                       QCommandLineOption(QStringLiteral("mirror")), QCommandLineOption(QStringLiteral("force")),
                       QCommandLineOption(QStringLiteral("json"))});
    if (const std::optional<int> stop = parseCommandLine(parser, QStringLiteral("art"), arguments, 1, output))
        return *stop;
    CoverRunRequest request{.tracks = {},
                            .extraSize = std::nullopt,
                            .mirror = parser.isSet(QStringLiteral("mirror")),
                            .force = parser.isSet(QStringLiteral("force")),
                            .dryRun = parser.isSet(QStringLiteral("dry-run"))};
    if (parser.isSet(QStringLiteral("size"))) {
        request.extraSize = coverSizeOption(parser.value(QStringLiteral("size")));
        if (!request.extraSize)
            return output.fail(QStringLiteral("art: --size takes WIDTHxHEIGHT, such as 120x120, not '%1' (see "
                                              "'kestrune-cli art --help')")
                                   .arg(parser.value(QStringLiteral("size"))));
    }
    const std::optional<Source> source = resolveSource(parser.positionalArguments().first(), output);
    if (!source)
        return exitUsageOrInput;
    if (!source->deviceRoot)
        return output.fail(QStringLiteral("art: SOURCE must be an iPod root, not a bare database"));
    const WriteScope scope = writeScopeFor(*source->deviceRoot, false);
    const ParseResult *library = loadDatabase(*source, output);
    if (!library)
        return exitUsageOrInput;
    int status = exitSuccess;
    const std::optional<DeviceLock> lock = lockDevice(scope, QStringLiteral("art"), output, status);
    if (!lock)
        return status;
    const CoverRunReport report = runCoverStep(*source->deviceRoot, scope.root, *library, request, output);
    const QString folder = *source->deviceRoot + QStringLiteral("/.rockbox/albumart");
    if (parser.isSet(QStringLiteral("json"))) {
        QJsonObject json = coverRunJson(report, folder);
        if (report.stopped)
            json.insert(QStringLiteral("stoppedBy"), stoppingSignalName());
        output.printJson(QJsonDocument(json));
    } else {
        printCoverRun(report, folder, request.dryRun, output);
        output.out().flush();
    }
    if (report.stopped)
        return reportStop(report.count(CoverResult::Outcome::written), report.results.size(), QStringLiteral("covers"), output);
    return coverRunStatus(report);
}

} // namespace kestrune::cli
