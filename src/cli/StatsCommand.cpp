// `stats`: the play counts and ratings of the iPod, and the changelog that carries them into Rockbox.
#include "Commands.h"
#include "DeviceSession.h"
#include "SourceDatabase.h"
#include "TextTable.h"
#include "core/PlayCounts.h"
#include "export/StatisticsChangelog.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

namespace kestrune::cli {

namespace {

void printSummary(const StatisticsSummary &summary, const LibraryStatistics &statistics, CliOutput &output)
{
    QTextStream &out = output.out();
    out << counted(summary.tracksWithStatistics, "track", "tracks") << " with statistics: "
        << counted(summary.totalPlays, "play", "plays") << ", " << summary.ratedTracks << " rated";
    if (statistics.playsSinceSync > 0)
        out << " (" << counted(statistics.playsSinceSync, "play", "plays") << " since the last sync included)";
    out << '\n';
    if (summary.mostPlayed.isEmpty())
        return;
    out << "\nMost played:\n";
    TextTable table(
        {QStringLiteral("Plays"), QStringLiteral("Stars"), QStringLiteral("Title"), QStringLiteral("Artist")},
        {true, true, false, false});
    for (const Track &track : summary.mostPlayed) {
        table.addRow({QString::number(track.playCount()), QString::number(track.rating() / 20),
                      track.displayTitle(), track.displayArtist()});
    }
    table.print(out);
}

QJsonObject summaryJson(const StatisticsSummary &summary, const LibraryStatistics &statistics)
{
    QJsonArray mostPlayed;
    for (const Track &track : summary.mostPlayed) {
        mostPlayed.append(QJsonObject{{QStringLiteral("title"), track.displayTitle()},
                                      {QStringLiteral("artist"), track.displayArtist()},
                                      {QStringLiteral("playCount"), qint64(track.playCount())},
                                      {QStringLiteral("stars"), track.rating() / 20}});
    }
    return QJsonObject{{QStringLiteral("tracksWithStatistics"), summary.tracksWithStatistics},
                       {QStringLiteral("totalPlays"), summary.totalPlays},
                       {QStringLiteral("ratedTracks"), summary.ratedTracks},
                       {QStringLiteral("playsSinceSync"), statistics.playsSinceSync},
                       {QStringLiteral("mostPlayed"), mostPlayed}};
}

} // namespace

int runStats(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    const QCommandLineOption write(QStringLiteral("write"));
    const QCommandLineOption force(QStringLiteral("force"));
    const QCommandLineOption json(QStringLiteral("json"));
    parser.addOptions({write, force, json});
    if (const std::optional<int> stop =
            parseCommandLine(parser, QStringLiteral("stats"), arguments, 1, output))
        return *stop;
    const std::optional<Source> source = resolveSource(parser.positionalArguments().first(), output);
    if (!source)
        return exitUsageOrInput;
    if (parser.isSet(write) && !source->deviceRoot)
        return output.fail(QStringLiteral("stats --write: SOURCE must be an iPod root, not a bare database"));
    ParseResult *library = loadDatabase(*source, output);
    if (!library)
        return exitUsageOrInput;

    const std::optional<QString> target =
        source->deviceRoot ? changelogPath(*source->deviceRoot) : std::nullopt;
    std::optional<DeviceLock> lock;
    if (parser.isSet(write)) {
        int status = exitSuccess;
        lock = lockDevice(WriteScope{DeviceFolder::open(*source->deviceRoot), QString(), true}, QStringLiteral("stats"),
                          output, status);
        if (!lock)
            return status;
    }
    if (parser.isSet(write) && !target)
        return output.fail(
            QStringLiteral("stats --write: the device has no .rockbox folder: install Rockbox on it first"),
            exitSomeFailed);
    if (parser.isSet(write) && QFileInfo(QFileInfo(*target).absolutePath()).isSymLink())
        return output.fail(QStringLiteral("stats --write: ") + linkRefusedMessage(QFileInfo(*target).absolutePath()),
                           exitSomeFailed, QFileInfo(*target).absolutePath());
    if (parser.isSet(write) && !parser.isSet(force) && QFileInfo(*target).exists()) {
        return output.fail(QStringLiteral("stats --write: %1 already exists (Rockbox writes it on \"Export "
                                          "Modifications\"); --force replaces it")
                               .arg(*target),
                           exitSomeFailed);
    }

    const LibraryStatistics statistics =
        libraryStatistics(std::move(*library), QFileInfo(source->databasePath).absolutePath());
    if (statistics.playCountsUnreadable)
        output.warn(QStringLiteral("'Play Counts' beside the database is not a play counts file; ignored"));
    const StatisticsSummary summary = summarizeStatistics(statistics.tracks);
    QJsonObject report = summaryJson(summary, statistics);
    std::optional<StatisticsChangelog> changelog;
    if (parser.isSet(write)) {
        output.progress(QStringLiteral("Finding the music files on the device..."));
        DeviceFileIndex files(*source->deviceRoot);
        changelog = buildStatisticsChangelog(statistics.tracks, files);
        output.endProgress();
        if (const std::optional<QString> failure =
                writeStatisticsChangelog(lock->folder(), changelog->text, parser.isSet(force)))
            return output.fail(QStringLiteral("stats --write: %1").arg(*failure), exitSomeFailed, *target);
        report.insert(QStringLiteral("changelog"),
                      QJsonObject{{QStringLiteral("path"), *target},
                                  {QStringLiteral("written"), changelog->written},
                                  {QStringLiteral("notOnDevice"), changelog->notOnDevice},
                                  {QStringLiteral("tooLong"), changelog->tooLong}});
    }
    if (parser.isSet(json)) {
        output.printJson(QJsonDocument(report));
        return exitSuccess;
    }

    printSummary(summary, statistics, output);
    QTextStream &out = output.out();
    if (!changelog) {
        if (summary.tracksWithStatistics > 0 && target)
            out << "\n'kestrune-cli stats " << *source->deviceRoot
                << " --write' puts them where Rockbox can import them.\n";
        return exitSuccess;
    }
    out << "\nWrote " << *target << ": " << counted(changelog->written, "track", "tracks");
    if (changelog->notOnDevice > 0)
        out << "; left out " << changelog->notOnDevice << " whose file is not on the device";
    if (changelog->tooLong > 0)
        out << "; left out " << changelog->tooLong << " whose path is too long for the player";
    out << ".\nNext, on the player: Settings > General Settings > Database > Import Modifications. Rockbox imports "
           "it on\nits own only right after building or updating its database, with \"Load to RAM\" on, and only "
           "while that\ndatabase has never recorded a play. Tracks Rockbox has already played or rated keep "
           "Rockbox's values.\n";
    return exitSuccess;
}

} // namespace kestrune::cli
