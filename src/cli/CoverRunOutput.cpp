#include "CoverRunOutput.h"

#include <QJsonArray>

namespace kestrune::cli {

namespace {

QString sizeText(QSize size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

QStringList skippedParts(const CoverRunReport &report)
{
    QStringList parts;
    if (report.skippedNoAlbumOrArtist > 0)
        parts << QStringLiteral("%1 without album or artist").arg(counted(report.skippedNoAlbumOrArtist, "track", "tracks"));
    if (report.skippedTooLong > 0)
        parts << QStringLiteral("%1 too long for the player").arg(counted(report.skippedTooLong, "name", "names"));
    if (report.skippedRefusedCharacter > 0)
        parts << QStringLiteral("%1 with a character FAT refuses")
                     .arg(counted(report.skippedRefusedCharacter, "name", "names"));
    return parts;
}

} // namespace

void printCoverRun(const CoverRunReport &report, const QString &folder, bool dryRun, CliOutput &output)
{
    QTextStream &out = output.out();
    if (report.notApplicable) {
        out << "  " << *report.notApplicable << " Nothing written.\n";
        return;
    }
    if (report.failure) {
        out << "  FAILED: " << *report.failure << '\n';
        return;
    }
    using Outcome = CoverResult::Outcome;
    for (const CoverResult &result : report.results) {
        switch (result.outcome) {
        case Outcome::written:
            out << (dryRun ? "  would write " : "  wrote   ") << result.fileName << " (" << sizeText(result.size) << ")\n";
            break;
        case Outcome::unchanged:
            out << "  unchanged " << result.fileName << '\n';
            break;
        case Outcome::removed:
            out << (dryRun ? "  would remove " : "  removed ") << result.fileName << " (" << result.reason << ")\n";
            break;
        case Outcome::kept:
            out << "  kept    " << result.fileName << " (" << result.reason << ")\n";
            break;
        case Outcome::failed:
            out << "  FAILED  " << result.fileName << ": " << result.reason << '\n';
            break;
        }
    }
    QStringList counts{QStringLiteral("%1 written").arg(report.count(Outcome::written)),
                       QStringLiteral("%1 unchanged").arg(report.count(Outcome::unchanged))};
    if (const qsizetype removed = report.count(Outcome::removed))
        counts << QStringLiteral("%1 removed").arg(removed);
    if (const qsizetype kept = report.count(Outcome::kept))
        counts << QStringLiteral("%1 kept").arg(kept);
    if (const qsizetype failed = report.count(Outcome::failed))
        counts << QStringLiteral("%1 FAILED").arg(failed);
    const qsizetype files = report.results.size() - report.count(Outcome::removed);
    out << counted(files, "cover", "covers") << " in " << folder << ": " << counts.join(QStringLiteral(", "));
    const QStringList skipped = skippedParts(report);
    if (!skipped.isEmpty())
        out << "; skipped " << skipped.join(QStringLiteral(", "));
    out << '\n';
    if (report.recordFailure)
        out << "  the record of what Kestrune wrote could not be updated: " << *report.recordFailure << '\n';
}

QJsonObject coverRunJson(const CoverRunReport &report, const QString &folder)
{
    QJsonObject json{{QStringLiteral("folder"), folder}};
    if (report.notApplicable) {
        json.insert(QStringLiteral("notApplicable"), *report.notApplicable);
        return json;
    }
    if (report.failure)
        json.insert(QStringLiteral("failure"), *report.failure);
    QJsonArray covers;
    for (const CoverResult &result : report.results) {
        QJsonObject cover{{QStringLiteral("file"), result.fileName}, {QStringLiteral("status"), result.status()}};
        if (!result.size.isEmpty()) {
            cover.insert(QStringLiteral("width"), result.size.width());
            cover.insert(QStringLiteral("height"), result.size.height());
        }
        if (result.trackCount > 0)
            cover.insert(QStringLiteral("tracks"), result.trackCount);
        if (!result.reason.isEmpty())
            cover.insert(QStringLiteral("reason"), result.reason);
        covers.append(cover);
    }
    json.insert(QStringLiteral("covers"), covers);
    json.insert(QStringLiteral("skipped"), QJsonObject{{QStringLiteral("noAlbumOrArtist"), report.skippedNoAlbumOrArtist},
                                                       {QStringLiteral("tooLong"), report.skippedTooLong},
                                                       {QStringLiteral("refusedCharacter"), report.skippedRefusedCharacter}});
    if (report.recordFailure)
        json.insert(QStringLiteral("recordFailure"), *report.recordFailure);
    return json;
}

int coverRunStatus(const CoverRunReport &report)
{
    return report.failed() ? exitSomeFailed : exitSuccess;
}

} // namespace kestrune::cli
