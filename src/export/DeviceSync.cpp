#include "DeviceSync.h"

#include "DeviceRecord.h"

namespace kestrune {

StatisticsStepReport runStatisticsStep(const DeviceFolder &deviceRoot, const LibraryStatistics &statistics, bool dryRun)
{
    StatisticsStepReport report;
    const std::optional<QString> path = changelogPath(deviceRoot.path());
    const std::optional<DeviceRecord> record = readDeviceRecord(deviceRoot);
    if (!path || !record)
        return report; // no Rockbox folder
    report.path = *path;
    if (summarizeStatistics(statistics.tracks).tracksWithStatistics == 0) {
        report.outcome = StatisticsStepReport::Outcome::nothingToBring;
        return report;
    }
    DeviceFileIndex files(deviceRoot.path());
    report.changelog = buildStatisticsChangelog(statistics.tracks, files);
    const QString relative = path->mid(deviceRoot.path().size() + 1);
    const DeviceFolder rockbox = rockboxFolderOf(deviceRoot);
    const std::optional<QByteArray> existing = rockbox.readFile(changelogFileName, qint64(1) << 30);
    const RecordEntry *ours = record->entryAt(relative);
    if (existing && *existing == report.changelog.text) {
        report.outcome = StatisticsStepReport::Outcome::unchanged;
        return report;
    }
    if (existing && (!ours || ours->sha256 != RockboxGenerator::contentDigest(*existing))) {
        report.outcome = StatisticsStepReport::Outcome::playersOwnLeft;
        return report;
    }
    report.outcome = StatisticsStepReport::Outcome::written;
    if (dryRun)
        return report;
    report.failure = writeStatisticsChangelog(deviceRoot, report.changelog.text, true);
    if (report.failure) {
        report.outcome = StatisticsStepReport::Outcome::failed;
        return report;
    }
    DeviceRecord updated = *record;
    updated.entries.removeIf([&relative](const RecordEntry &entry) { return entry.path == relative; });
    updated.entries.append(RecordEntry{.kind = RecordEntry::Kind::changelog,
                                       .path = relative,
                                       .sha256 = RockboxGenerator::contentDigest(report.changelog.text)});
    if (const std::optional<QString> failure = writeDeviceRecord(deviceRoot, updated))
        report.failure = QStringLiteral("the changelog was written, but the record of it was not: ") + *failure;
    return report;
}

SyncReport runSync(const WriteScope &scope, const SyncRequest &request, const RockboxGenerator &generator,
                   const RockboxGenerator::RunProgress &written, const std::atomic<bool> *stop,
                   const CoverProgress &coverProgress)
{
    SyncReport report;
    PlaylistRunRequest playlists = request.playlists;
    const bool canMirror = scope.onIPod && readDeviceRecord(scope.root).has_value();
    playlists.mirror = playlists.mirror && canMirror; // elsewhere the step is said not to apply
    report.playlists = runPlaylists(scope, playlists, generator, written, stop);
    report.stopped = report.playlists.stopped || (stop && stop->load());
    if (request.statistics && !report.stopped && scope.onIPod)
        report.statistics = runStatisticsStep(scope.root, *request.statistics, playlists.dryRun);
    else if (request.statistics && !report.stopped)
        report.statistics = StatisticsStepReport{};
    if (request.covers && !report.stopped && scope.onIPod) {
        CoverRunRequest covers = request.covers->request;
        covers.dryRun = playlists.dryRun;
        report.covers = runCovers(scope.root, *request.covers->artwork, covers, coverProgress, stop);
        report.stopped = report.covers->stopped;
    }
    return report;
}

} // namespace kestrune
