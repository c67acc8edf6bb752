#include "PlaylistRunOutput.h"

#include "JsonFormat.h"

#include <QJsonArray>

namespace kestrune::cli {

namespace {

QString outcomeLine(const ExportItemResult &result, bool dryRun)
{
    using Outcome = ExportItemResult::Outcome;
    if (result.outcome == Outcome::removed || result.outcome == Outcome::kept) {
        if (!result.isSuccess)
            return QStringLiteral("  FAILED  %1 (%2): %3").arg(result.filename, result.reason, result.errorMessage.value_or(QString()));
        const QString verb = result.outcome == Outcome::kept ? QStringLiteral("kept   ")
                             : dryRun                        ? QStringLiteral("would remove")
                                                             : QStringLiteral("removed");
        return QStringLiteral("  %1 %2 (%3)").arg(verb, result.filename, result.reason);
    }
    QString tracks = counted(result.trackCount, "track", "tracks");
    if (result.intendedFilename)
        tracks += QStringLiteral("; not %1, which another playlist's file is on a case-blind device")
                      .arg(*result.intendedFilename);
    if (!result.isSuccess)
        return QStringLiteral("  FAILED  %1 (%2): %3").arg(result.filename, tracks, result.errorMessage.value_or(QString()));
    QString verb = result.outcome == Outcome::unchanged ? QStringLiteral("unchanged")
                   : result.isUpdate                    ? QStringLiteral("updated")
                                                        : QStringLiteral("wrote  ");
    if (dryRun)
        verb = result.isUpdate ? QStringLiteral("would update") : QStringLiteral("would write ");
    return QStringLiteral("  %1 %2 (%3)").arg(verb, result.filename, tracks);
}

qsizetype countOf(const PlaylistRunReport &report, const char *status)
{
    return std::count_if(report.results.cbegin(), report.results.cend(),
                         [status](const ExportItemResult &r) { return r.status() == QLatin1StringView(status); });
}

} // namespace

QHash<quint64, int> libraryIdCounts(const QList<Playlist> &playlists)
{
    QHash<quint64, int> counts;
    for (const Playlist &playlist : playlists)
        ++counts[playlist.dbId];
    return counts;
}

void printPlaylistRun(const PlaylistRunReport &report, const QString &destination, bool dryRun, CliOutput &output)
{
    QTextStream &out = output.out();
    for (const ExportItemResult &result : report.results)
        out << outcomeLine(result, dryRun) << '\n';
    const qsizetype playlists = std::count_if(report.results.cbegin(), report.results.cend(), [](const ExportItemResult &r) {
        return r.outcome == ExportItemResult::Outcome::written || r.outcome == ExportItemResult::Outcome::unchanged;
    });
    if (dryRun) {
        out << counted(playlists, "playlist", "playlists") << " would be written to " << destination;
        if (const qsizetype removals = countOf(report, "removed"))
            out << ", " << removals << " removed";
        out << " (dry run: nothing changed)\n";
    } else {
        out << counted(playlists, "playlist", "playlists") << " in " << destination << ": "
            << countOf(report, "written") + countOf(report, "updated") << " written, " << countOf(report, "unchanged")
            << " unchanged";
        if (const qsizetype removed = countOf(report, "removed"))
            out << ", " << removed << " removed";
        if (const qsizetype kept = countOf(report, "kept"))
            out << ", " << kept << " kept";
        if (const qsizetype failed = report.failures())
            out << ", " << failed << " failed";
        if (report.stopped)
            out << "; dot files left alone: the run was stopped\n";
        else if (report.cleaning.skippedOutsideIPod)
            out << "; dot files left alone: the folder is not on an iPod\n";
        else
            out << "; " << counted(report.cleaning.removed, "dot file", "dot files") << " removed\n";
        printCleaningProblems(report.cleaning, out);
    }
    if (report.mirrorRefusal)
        output.warn(QStringLiteral("--mirror: ") + *report.mirrorRefusal);
    if (report.recordFailure)
        output.warn(QStringLiteral("the record of what Kestrune wrote could not be saved: ") + *report.recordFailure);
}

QJsonObject playlistRunJson(const PlaylistRunReport &report, const QString &destination)
{
    QJsonArray results;
    for (const ExportItemResult &result : report.results)
        results.append(exportResultJson(result));
    QJsonObject json{{QStringLiteral("destination"), destination},
                     {QStringLiteral("results"), results},
                     {QStringLiteral("dotFilesRemoved"), report.cleaning.removed}};
    if (!report.cleaning.failures.isEmpty() || !report.cleaning.skippedMounts.isEmpty() || report.cleaning.refused)
        json.insert(QStringLiteral("dotFileCleaning"), cleaningJson(report.cleaning));
    if (report.mirrorRefusal)
        json.insert(QStringLiteral("mirrorRefused"), *report.mirrorRefusal);
    if (report.recordFailure)
        json.insert(QStringLiteral("recordFailure"), *report.recordFailure);
    return json;
}

int playlistRunStatus(const PlaylistRunReport &report)
{
    const bool failed = report.failures() > 0 || !report.cleaning.failures.isEmpty() || report.mirrorRefusal;
    return failed ? exitSomeFailed : exitSuccess;
}

} // namespace kestrune::cli
