#include "PlaylistRun.h"

#include "DeviceRecord.h"
#include "PlaylistFileName.h"
#include "PlaylistWriteBatch.h"

#include <QHash>

namespace kestrune {

namespace {

QString withoutExtension(const QString &filename)
{
    return filename.left(filename.lastIndexOf(u'.'));
}

// The record's path of a file in the destination, relative to the device's root.
QString recordPath(const QString &relativeFolder, const QString &filename)
{
    return relativeFolder.isEmpty() ? filename : relativeFolder + u'/' + filename;
}

bool isDirectlyIn(const QString &path, const QString &relativeFolder)
{
    const QString prefix = relativeFolder.isEmpty() ? QString() : relativeFolder + u'/';
    return path.startsWith(prefix) && !path.mid(prefix.size()).contains(u'/');
}

// The name each playlist's file had in an earlier run, by the record, where its id tells it apart.
QList<std::optional<QString>> earlierNames(const PlaylistRunRequest &request, const std::optional<DeviceRecord> &record,
                                           const QString &relativeFolder)
{
    QList<std::optional<QString>> names;
    QHash<quint64, QString> byId;
    if (record) {
        for (const RecordEntry &entry : record->entries) {
            if (entry.kind == RecordEntry::Kind::playlist && isDirectlyIn(entry.path, relativeFolder) &&
                isRenameKey(entry.playlistId, request.libraryIds))
                byId.insert(entry.playlistId, withoutExtension(entry.path.section(u'/', -1)));
        }
    }
    for (const Playlist &playlist : request.playlists) {
        const auto found = byId.constFind(playlist.dbId);
        names.append(found != byId.cend() && isRenameKey(playlist.dbId, request.libraryIds) ? std::optional(*found)
                                                                                             : std::nullopt);
    }
    return names;
}

ExportItemResult plannedResult(const Playlist &playlist, const QString &filename, const QString &intended,
                               const QString &folder)
{
    return ExportItemResult{.playlistName = playlist.name,
                            .filename = filename,
                            .fileURL = QUrl::fromLocalFile(folder + u'/' + filename),
                            .trackCount = int(playlist.tracks.size()),
                            .isSuccess = true,
                            .isUpdate = playlist.existingRockboxFile.has_value(),
                            .intendedFilename = intended != filename ? std::optional(intended) : std::nullopt};
}

struct Removal {
    RecordEntry entry;
    ExportItemResult result;
};

// What mirror does with each file the record says Kestrune wrote into the destination and this run did
// not produce.
QList<Removal> mirrorPlan(const PlaylistRunRequest &request, const DeviceRecord &record, const QString &relativeFolder,
                          const QList<ExportItemResult> &produced, const DeviceFolder &destination)
{
    QSet<QString> producedNames;
    QSet<quint64> exportedIds;
    for (const ExportItemResult &result : produced)
        producedNames.insert(caseBlindKey(result.filename));
    for (const Playlist &playlist : request.playlists)
        exportedIds.insert(playlist.dbId);
    QList<Removal> plan;
    for (const RecordEntry &entry : record.entries) {
        if (entry.kind != RecordEntry::Kind::playlist || !isDirectlyIn(entry.path, relativeFolder) || entry.onTheGo)
            continue; // an On-The-Go playlist's file is the user's only copy of it
        const QString name = entry.path.section(u'/', -1);
        // On a case-blind volume a name equal but for case is the file this run wrote.
        if (producedNames.contains(caseBlindKey(name)))
            continue;
        if (request.mirrorOnlyIds && !request.mirrorOnlyIds->contains(entry.playlistId))
            continue;
        if (request.mirrorConfirmed && !request.mirrorConfirmed->contains(name))
            continue;
        const std::optional<QByteArray> bytes = destination.readFile(name, qint64(1) << 30);
        if (!bytes)
            continue; // gone already
        Removal removal{entry, ExportItemResult{.playlistName = withoutExtension(name),
                                                .filename = name,
                                                .fileURL = QUrl::fromLocalFile(destination.path() + u'/' + name),
                                                .isSuccess = true}};
        if (RockboxGenerator::contentDigest(*bytes) != entry.sha256) {
            removal.result.outcome = ExportItemResult::Outcome::kept;
            removal.result.reason = QStringLiteral("edited since Kestrune wrote it");
        } else {
            removal.result.outcome = ExportItemResult::Outcome::removed;
            const bool known = isRenameKey(entry.playlistId, request.libraryIds);
            removal.result.reason = known && exportedIds.contains(entry.playlistId) ? QStringLiteral("renamed in iTunes")
                                    : known && request.libraryIds.contains(entry.playlistId)
                                        ? QStringLiteral("no longer exported")
                                        : QStringLiteral("deleted in iTunes");
        }
        plan.append(removal);
    }
    return plan;
}

} // namespace

qsizetype PlaylistRunReport::failures() const
{
    return std::count_if(results.cbegin(), results.cend(), [](const ExportItemResult &r) { return !r.isSuccess; });
}

bool isRenameKey(quint64 id, const QHash<quint64, int> &libraryIds)
{
    return id != 0 && libraryIds.value(id) <= 1;
}

PlaylistRunReport runPlaylists(const WriteScope &scope, const PlaylistRunRequest &request,
                               const RockboxGenerator &generator, const RockboxGenerator::RunProgress &written,
                               const std::atomic<bool> *stop)
{
    PlaylistRunReport report;
    const DeviceFolder destination = scope.destination(!request.dryRun);
    report.staleTemporaryFiles = PlaylistWriteBatch::sweepStaleTemporaryFiles(destination, request.dryRun);
    const std::optional<DeviceRecord> record =
        scope.onIPod && scope.root.isOpen() ? readDeviceRecord(scope.root) : std::nullopt;
    if (request.mirror && !record) {
        report.mirrorRefusal = QStringLiteral("mirror needs an iPod with a .rockbox folder, where the record of "
                                              "what Kestrune wrote is kept; nothing is removed");
    } else if (request.mirror && request.libraryIncomplete) {
        report.mirrorRefusal = QStringLiteral("the database looks truncated or damaged, so playlists missing from "
                                              "it would look deleted; nothing is removed");
    }

    // Plan every file, keep back those a truncated database would shorten, write the others.
    const QString folder = destination.path();
    const QStringList filenames = RockboxGenerator::playlistFilenames(
        request.playlists, request.options, earlierNames(request, record, scope.relativeFolder));
    QList<Playlist> toWrite;
    QStringList toWriteNames;
    QList<qsizetype> writeIndex; // by result: its place among those written, -1 when kept back
    for (qsizetype i = 0; i < request.playlists.size(); ++i) {
        const Playlist &playlist = request.playlists.at(i);
        ExportItemResult planned = plannedResult(playlist, filenames.at(i),
                                                 RockboxGenerator::playlistFilename(playlist, request.options), folder);
        if (!request.keepExistingFilesReason.isEmpty() &&
            destination.entryKind(planned.filename) != DeviceFolder::EntryKind::missing) {
            planned.isSuccess = false;
            planned.errorMessage = request.keepExistingFilesReason;
            writeIndex.append(-1);
        } else {
            writeIndex.append(toWrite.size());
            toWrite.append(playlist);
            toWriteNames.append(planned.filename);
        }
        report.results.append(planned);
    }
    QList<QByteArray> digests;
    if (!request.dryRun) {
        // The record vouches for a file whose bytes it names while its size and time are as recorded.
        const auto knownUnchanged = [&](const QString &filename, const QByteArray &digest) {
            const RecordEntry *entry = record ? record->entryAt(recordPath(scope.relativeFolder, filename)) : nullptr;
            return entry && entry->sha256 == digest && entry->stamp.size >= 0 && destination.stampOf(filename) == entry->stamp;
        };
        const QList<ExportItemResult> done = generator.exportPlaylists(toWrite, destination, request.options, written,
                                                                       stop, toWriteNames, &digests, knownUnchanged);
        for (qsizetype i = 0; i < report.results.size(); ++i) {
            if (writeIndex.at(i) >= 0)
                report.results[i] = done.at(writeIndex.at(i));
        }
    }
    report.stopped = stop && stop->load();

    // Mirror: only once every playlist of the run is in place, and never on a stop.
    QList<Removal> removals;
    if (request.mirror && record && !request.libraryIncomplete && !report.stopped)
        removals = mirrorPlan(request, *record, scope.relativeFolder, report.results, destination);
    bool removedAny = false;
    for (Removal &removal : removals) {
        if (removal.result.outcome == ExportItemResult::Outcome::removed && !request.dryRun) {
            if (const std::optional<QString> failure = destination.removeFile(removal.result.filename)) {
                removal.result.isSuccess = false;
                removal.result.errorMessage = *failure;
            } else {
                removedAny = true;
            }
        }
    }
    if (removedAny) {
        if (const std::optional<QString> failure = destination.flush()) {
            for (Removal &removal : removals) {
                if (removal.result.outcome == ExportItemResult::Outcome::removed && removal.result.isSuccess) {
                    removal.result.isSuccess = false;
                    removal.result.errorMessage =
                        QStringLiteral("The file was removed, but the device did not confirm it: ") + *failure;
                }
            }
        }
    }

    // The record: what this run put (or found) in place, plus what it neither produced nor removed.
    if (record && !request.dryRun) {
        QList<RecordEntry> fresh;
        QSet<QString> producedPaths;
        for (qsizetype i = 0; i < report.results.size(); ++i) {
            const ExportItemResult &result = report.results.at(i);
            const Playlist &playlist = request.playlists.at(i);
            const QByteArray digest = writeIndex.at(i) >= 0 ? digests.value(writeIndex.at(i)) : QByteArray();
            const QString path = recordPath(scope.relativeFolder, result.filename);
            producedPaths.insert(path);
            if (result.isSuccess && !digest.isEmpty())
                fresh.append(RecordEntry{.kind = RecordEntry::Kind::playlist, .path = path, .sha256 = digest,
                                         .playlistId = playlist.dbId, .onTheGo = playlist.isOnTheGo,
                                         .stamp = destination.stampOf(result.filename).value_or(DeviceFolder::Stamp{})});
            else if (const RecordEntry *earlier = record->entryAt(path))
                fresh.append(*earlier); // not written this time: what was known of it stays
        }
        QSet<QString> handled = producedPaths;
        for (const Removal &removal : std::as_const(removals)) {
            if (removal.result.isSuccess || removal.result.outcome == ExportItemResult::Outcome::kept)
                handled.insert(removal.entry.path); // gone, or the user's now
        }
        for (const RecordEntry &entry : record->entries) {
            if (entry.kind == RecordEntry::Kind::playlist && isDirectlyIn(entry.path, scope.relativeFolder) &&
                !handled.contains(entry.path) && destination.entryKind(entry.path.section(u'/', -1)) == DeviceFolder::EntryKind::file)
                fresh.append(entry);
        }
        DeviceRecord updated = *record;
        updated.replaceBelow(scope.relativeFolder.isEmpty() ? QString() : scope.relativeFolder + u'/',
                             RecordEntry::Kind::playlist, fresh);
        if (!(updated == *record))
            report.recordFailure = writeDeviceRecord(scope.root, updated);
    }
    for (const Removal &removal : std::as_const(removals))
        report.results.append(removal.result);
    if (request.options.cleanDotFiles && !request.dryRun && !report.stopped)
        report.cleaning = generator.cleanDotFileTree(destination);
    return report;
}

} // namespace kestrune
