// `sync`: what a user runs after each iTunes sync, as one command with one lock: the playlists with their
// deleted and renamed ones mirrored, then the play counts and ratings.
#include "Commands.h"
#include "CoverRunOutput.h"
#include "DeviceSession.h"
#include "Interruption.h"
#include "PlaylistRunOutput.h"
#include "SourceDatabase.h"
#include "export/DeviceSync.h"

#include <QFileInfo>
#include <QJsonObject>

namespace kestrune::cli {

namespace {

const char *const importAdvice =
    "Next, on the player: Settings > General Settings > Database > Import Modifications. Rockbox imports it on\n"
    "its own only right after building or updating its database, with \"Load to RAM\" on, and only while that\n"
    "database has never recorded a play.\n";

QString statusOf(const StatisticsStepReport &report)
{
    using Outcome = StatisticsStepReport::Outcome;
    switch (report.outcome) {
    case Outcome::notApplicable:
        return QStringLiteral("notApplicable");
    case Outcome::nothingToBring:
        return QStringLiteral("nothingToBring");
    case Outcome::written:
        return QStringLiteral("written");
    case Outcome::unchanged:
        return QStringLiteral("unchanged");
    case Outcome::playersOwnLeft:
        return QStringLiteral("left");
    case Outcome::failed:
        break;
    }
    return QStringLiteral("failed");
}

void printStatistics(const StatisticsStepReport &report, bool dryRun, QTextStream &out)
{
    using Outcome = StatisticsStepReport::Outcome;
    out << "\nPlay counts and ratings:\n";
    switch (report.outcome) {
    case Outcome::notApplicable:
        out << "  does not apply: the device has no .rockbox folder (Rockbox is not installed)\n";
        return;
    case Outcome::nothingToBring:
        out << "  nothing to bring over: no track has plays or a rating\n";
        return;
    case Outcome::unchanged:
        out << "  unchanged " << report.path << '\n';
        return;
    case Outcome::playersOwnLeft:
        out << "  left " << report.path << ": Kestrune did not write it (Rockbox writes one on \"Export Modifications\"); "
            << "'kestrune-cli stats --write --force' replaces it\n";
        return;
    case Outcome::failed:
        out << "  FAILED  " << report.path << ": " << report.failure.value_or(QString()) << '\n';
        return;
    case Outcome::written:
        break;
    }
    out << "  " << (dryRun ? "would write " : "wrote   ") << report.path << " ("
        << counted(report.changelog.written, "track", "tracks");
    if (report.changelog.notOnDevice > 0)
        out << "; left out " << report.changelog.notOnDevice << " whose file is not on the device";
    if (report.changelog.tooLong > 0)
        out << "; left out " << report.changelog.tooLong << " whose path is too long for the player";
    out << ")\n" << (dryRun ? "" : importAdvice);
}

QJsonObject statisticsJson(const StatisticsStepReport &report)
{
    QJsonObject json{{QStringLiteral("status"), statusOf(report)}};
    if (!report.path.isEmpty())
        json.insert(QStringLiteral("path"), report.path);
    if (report.outcome == StatisticsStepReport::Outcome::written) {
        json.insert(QStringLiteral("written"), report.changelog.written);
        json.insert(QStringLiteral("notOnDevice"), report.changelog.notOnDevice);
        json.insert(QStringLiteral("tooLong"), report.changelog.tooLong);
    }
    if (report.failure)
        json.insert(QStringLiteral("failure"), *report.failure);
    return json;
}

} // namespace

int runSync(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    const auto flag = [](const char *name) { return QCommandLineOption(QString::fromLatin1(name)); };
    const auto valued = [](const char *name) {
        return QCommandLineOption(QString::fromLatin1(name), QString(), QStringLiteral("value"));
    };
    parser.addOptions({flag("m3u"), flag("no-extinf"), valued("prefix"), flag("on-the-go"), valued("folders"),
                       flag("split-long"), flag("dry-run"), flag("json")});
    if (const std::optional<int> stop = parseCommandLine(parser, QStringLiteral("sync"), arguments, 1, output))
        return *stop;
    if (parser.isSet(QStringLiteral("folders")) && parser.value(QStringLiteral("folders")) != QLatin1StringView("flatten"))
        return output.fail(QStringLiteral("sync: --folders takes 'flatten', not '%1' (see 'kestrune-cli sync --help')")
                               .arg(parser.value(QStringLiteral("folders"))));
    if (const std::optional<QString> problem = prefixProblem(parser.value(QStringLiteral("prefix"))))
        return output.fail(QStringLiteral("sync: %1 (see 'kestrune-cli sync --help')").arg(*problem));
    const std::optional<Source> source = resolveSource(parser.positionalArguments().first(), output);
    if (!source)
        return exitUsageOrInput;
    if (!source->deviceRoot || !source->playlistsFolder)
        return output.fail(QStringLiteral("sync: SOURCE must be an iPod root, not a bare database"));
    const bool dryRun = parser.isSet(QStringLiteral("dry-run"));
    const QString destination = *source->playlistsFolder;
    const WriteScope scope = writeScopeFor(destination, !dryRun);
    ParseResult *library = loadDatabase(*source, output);
    if (!library)
        return exitUsageOrInput;
    const ParseResult asRead = *library; // the statistics step reads the library as the database has it
    PlaylistRequestOptions names{.m3u = QStringLiteral("m3u"), .noExtinf = QStringLiteral("no-extinf"),
                                 .prefix = QStringLiteral("prefix"), .dryRun = QStringLiteral("dry-run"),
                                 .splitLong = QStringLiteral("split-long"), .onTheGo = QStringLiteral("on-the-go"),
                                 .folders = QStringLiteral("folders")};
    std::optional<PlaylistRunRequest> playlists = playlistRequest(parser, names, *source, *library, destination, output);
    if (!playlists)
        return exitUsageOrInput;
    playlists->mirror = true;
    // The sync writes what the device needs; a truncated database still keeps existing files.
    int status = exitSuccess;
    const std::optional<DeviceLock> lock = lockDevice(scope, QStringLiteral("sync"), output, status);
    if (!lock)
        return status;
    const bool mirrorApplies = !mirrorProblem(scope);
    const ArtworkLibrary artwork = ArtworkLibrary::open(*source->deviceRoot);
    SyncRequest request{*playlists, libraryStatistics(asRead, QFileInfo(source->databasePath).absolutePath()),
                        SyncRequest::Covers{&artwork, CoverRunRequest{.tracks = asRead.tracksInOrder(), .mirror = true}}};
    const qsizetype total = playlists->playlists.size();
    const SyncReport report = kestrune::runSync(
        scope, request, RockboxGenerator(),
        [&](qsizetype count) {
            output.progress(QStringLiteral("[%1/%2] %3").arg(count).arg(total).arg(playlists->playlists.at(count - 1).name));
        },
        &stopRequested(),
        [&](qsizetype done, qsizetype all) { output.progress(QStringLiteral("[%1/%2] covers").arg(done).arg(all)); });
    output.endProgress();
    const QString coverFolder = *source->deviceRoot + QStringLiteral("/.rockbox/albumart");

    if (parser.isSet(QStringLiteral("json"))) {
        QJsonObject json{{QStringLiteral("playlists"), playlistRunJson(report.playlists, destination)}};
        if (!mirrorApplies)
            json.insert(QStringLiteral("mirror"), QStringLiteral("notApplicable"));
        if (report.statistics)
            json.insert(QStringLiteral("statistics"), statisticsJson(*report.statistics));
        if (report.covers)
            json.insert(QStringLiteral("covers"), coverRunJson(*report.covers, coverFolder));
        if (report.stopped)
            json.insert(QStringLiteral("stoppedBy"), stoppingSignalName());
        output.printJson(QJsonDocument(json));
    } else {
        output.out() << "Playlists:\n";
        printPlaylistRun(report.playlists, destination, dryRun, output);
        if (!mirrorApplies)
            output.out() << "  mirror does not apply: the device has no .rockbox folder, where Kestrune keeps the "
                            "record of what it wrote\n";
        if (report.statistics)
            printStatistics(*report.statistics, dryRun, output.out());
        if (report.covers) {
            output.out() << "\nCovers:\n";
            printCoverRun(*report.covers, coverFolder, dryRun, output);
        }
        output.out().flush();
    }
    if (report.stopped) {
        const qsizetype done = std::count_if(report.playlists.results.cbegin(), report.playlists.results.cend(),
                                             [](const ExportItemResult &r) { return r.isSuccess; });
        return reportStop(done, report.playlists.results.size(), QStringLiteral("playlists"), output);
    }
    const bool statisticsFailed = report.statistics && report.statistics->isFailure();
    const int coverStatus = report.covers ? coverRunStatus(*report.covers) : int(exitSuccess);
    return std::max({playlistRunStatus(report.playlists), statisticsFailed ? int(exitSomeFailed) : int(exitSuccess), coverStatus});
}

} // namespace kestrune::cli
