// `convert`: the conversion run without a window.
#include "Commands.h"
#include "DeviceSession.h"
#include "Interruption.h"
#include "JsonFormat.h"
#include "PlayerReport.h"
#include "SourceDatabase.h"
#include "core/PlaylistFolders.h"
#include "device/MountTable.h"
#include "export/ExistingFileMatching.h"
#include "export/M3UContent.h"
#include "export/PlaylistWriteBatch.h"
#include "export/RockboxGenerator.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>

namespace kestrune::cli {

namespace {

struct ConvertRequest {
    QString destination;
    QList<Playlist> playlists; // database order
    ConversionOptions options;
    bool dryRun = false;
    bool json = false;
    bool keepExistingFiles = false; // the database looks truncated and --force was not given
};

// Every non-master playlist, as the window ticks them after a load; or the named ones.
std::optional<QList<Playlist>> choosePlaylists(const QList<Playlist> &all, const QStringList &names,
                                               bool includeMaster, CliOutput &output)
{
    const QSet<QString> wanted(names.cbegin(), names.cend());
    QSet<QString> found;
    QList<Playlist> chosen;
    for (const Playlist &playlist : all) {
        const bool named = wanted.contains(playlist.name);
        if (named)
            found.insert(playlist.name);
        if (named || (wanted.isEmpty() && !playlist.isMaster) || (includeMaster && playlist.isMaster))
            chosen.append(playlist);
    }
    for (const QString &name : names) {
        if (!found.contains(name)) {
            output.fail(QStringLiteral("convert: no playlist named '%1'").arg(name));
            return std::nullopt;
        }
    }
    return chosen;
}

QString outcomeLine(const ExportItemResult &result, bool dryRun)
{
    QString tracks = result.trackCount == 1 ? QStringLiteral("1 track")
                                            : QStringLiteral("%1 tracks").arg(result.trackCount);
    if (result.intendedFilename)
        tracks += QStringLiteral("; not %1, which another playlist's file is on a case-blind device")
                      .arg(*result.intendedFilename);
    if (dryRun)
        return QStringLiteral("  %1 %2 (%3)")
            .arg(result.isUpdate ? QStringLiteral("would update") : QStringLiteral("would write "),
                 result.filename, tracks);
    if (!result.isSuccess)
        return QStringLiteral("  FAILED  %1 (%2): %3")
            .arg(result.filename, tracks, result.errorMessage.value_or(QString()));
    return QStringLiteral("  %1 %2 (%3)")
        .arg(result.isUpdate ? QStringLiteral("updated") : QStringLiteral("wrote  "), result.filename,
             tracks);
}

ExportItemResult plannedResult(const Playlist &playlist, const QString &filename, const ConvertRequest &request)
{
    const QString intended = RockboxGenerator::playlistFilename(playlist, request.options);
    return ExportItemResult{.playlistName = playlist.name,
                            .filename = filename,
                            .fileURL = QUrl::fromLocalFile(request.destination + u'/' + filename),
                            .trackCount = int(playlist.tracks.size()),
                            .isSuccess = true,
                            .isUpdate = playlist.existingRockboxFile.has_value(),
                            .intendedFilename = intended != filename ? std::optional(intended) : std::nullopt};
}

// A truncated database lists fewer tracks than the one the existing files were made from; they stay.
bool wouldOverwrite(const ExportItemResult &planned, const ConvertRequest &request)
{
    return request.keepExistingFiles && QFileInfo::exists(planned.fileURL.toLocalFile());
}

QList<ExportItemResult> exportAll(const ConvertRequest &request, const DeviceFolder &destination,
                                  const RockboxGenerator &generator, CliOutput &output)
{
    QList<Playlist> toWrite;
    QStringList toWriteNames;
    QList<ExportItemResult> results;
    const QStringList filenames = RockboxGenerator::playlistFilenames(request.playlists, request.options);
    for (const Playlist &playlist : request.playlists) {
        ExportItemResult planned = plannedResult(playlist, filenames.at(results.size()), request);
        if (request.dryRun || !wouldOverwrite(planned, request)) {
            if (!request.dryRun) {
                toWrite.append(playlist);
                toWriteNames.append(planned.filename);
            }
            results.append(planned);
            continue;
        }
        planned.isSuccess = false;
        planned.errorMessage = QStringLiteral("not overwritten, since the database looks truncated; give --force "
                                              "to overwrite it anyway");
        results.append(planned);
    }
    if (request.dryRun)
        return results;

    // Written together, a playlist kept back still holds its name, so the others keep theirs too.
    QList<ExportItemResult> written = generator.exportPlaylists(
        toWrite, destination, request.options,
        [&](qsizetype count) {
            output.progress(QStringLiteral("[%1/%2] %3").arg(count).arg(toWrite.size()).arg(toWrite.at(count - 1).name));
        },
        &stopRequested(), toWriteNames);
    output.endProgress();
    qsizetype next = 0;
    for (ExportItemResult &result : results) {
        if (!result.isSuccess) // kept back
            continue;
        const ExportItemResult &done = written.at(next++);
        result.isSuccess = done.isSuccess;
        result.errorMessage = done.errorMessage;
    }
    return results;
}

void warnAboutTheVolume(const QString &destination, CliOutput &output)
{
    const std::optional<MountEntry> mount = mountHolding(destination, systemMountTable());
    if (mount && storesNamesWithoutUtf8(*mount)) {
        output.warn(QStringLiteral("%1 is a FAT volume mounted without UTF-8 names, so names with accents or "
                                   "symbols are stored wrongly; mount it with the utf8 option")
                        .arg(mount->mountPoint));
    }
}

} // namespace

int runConvert(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    const auto flag = [](const char *name) { return QCommandLineOption(QString::fromLatin1(name)); };
    const auto valued = [](const char *name) {
        return QCommandLineOption(QString::fromLatin1(name), QString(), QStringLiteral("value"));
    };
    const QCommandLineOption dest = valued("dest"), playlist = valued("playlist"), prefix = valued("prefix"),
                             folders = valued("folders");
    const QCommandLineOption includeMaster = flag("include-master"), m3u = flag("m3u"),
                             noExtinf = flag("no-extinf"), noSanitize = flag("no-sanitize"),
                             noClean = flag("no-clean"), force = flag("force"), dryRun = flag("dry-run"),
                             json = flag("json"), splitLong = flag("split-long"), onTheGo = flag("on-the-go");
    parser.addOptions({dest, playlist, includeMaster, m3u, noExtinf, prefix, noSanitize, noClean, force, dryRun,
                       json, splitLong, onTheGo, folders});
    if (const std::optional<int> stop = parseCommandLine(parser, QStringLiteral("convert"), arguments, 1, output))
        return *stop;
    if (parser.isSet(folders) && parser.value(folders) != QLatin1StringView("flatten"))
        return output.fail(QStringLiteral("convert: --folders takes 'flatten', not '%1' (see 'kestrune-cli "
                                          "convert --help')")
                               .arg(parser.value(folders)));
    if (const std::optional<QString> character = controlCharacterInPrefix(parser.value(prefix)))
        return output.fail(QStringLiteral("convert: --prefix holds the control character %1, which would break "
                                          "every entry of every playlist (see 'kestrune-cli convert --help')")
                               .arg(*character));

    const std::optional<Source> source = resolveSource(parser.positionalArguments().first(), output);
    if (!source)
        return exitUsageOrInput;
    ConvertRequest request;
    request.destination = parser.isSet(dest) ? QDir(parser.value(dest)).absolutePath()
                                             : source->playlistsFolder.value_or(QString());
    if (request.destination.isEmpty())
        return output.fail(QStringLiteral("convert: SOURCE is a bare database file; give --dest DIR"));
    ParseResult *library = loadDatabase(*source, output);
    if (!library)
        return exitUsageOrInput;

    const RockboxGenerator generator;
    if (parser.isSet(onTheGo))
        library->playlists += onTheGoPlaylists(*source, *library, output);
    if (parser.isSet(folders)) // the player's playlists menu shows no sub-folders
        library->playlists = flattenedFolders(library->playlists);
    const std::optional<QList<Playlist>> chosen =
        choosePlaylists(library->playlists, parser.values(playlist), parser.isSet(includeMaster), output);
    if (!chosen)
        return exitUsageOrInput;
    Player player = playerOf(*source);
    for (const Playlist &each : *chosen)
        request.playlists += parser.isSet(splitLong) ? splitToLimit(each, player.rockbox.playlistLimit)
                                                     : QList<Playlist>{each};
    request.options = ConversionOptions{.destinationFolder = QUrl::fromLocalFile(request.destination),
                                        .extendedM3U = !parser.isSet(noExtinf),
                                        .useM3U8Extension = !parser.isSet(m3u),
                                        .customPathPrefix = parser.value(prefix),
                                        .sanitizeFilenames = !parser.isSet(noSanitize),
                                        .includeMasterPlaylist = parser.isSet(includeMaster),
                                        .cleanDotFiles = !parser.isSet(noClean)};
    request.dryRun = parser.isSet(dryRun);
    request.json = parser.isSet(json);
    request.keepExistingFiles = library->looksTruncated && !parser.isSet(force);

    // One run per device: the lock is taken on the root everything below is then reached from. A dry run
    // writes nothing, and looks only when the folder is there already.
    const WriteScope scope = writeScopeFor(request.destination, !request.dryRun);
    std::optional<DeviceLock> lock;
    if (!request.dryRun || scope.root.isOpen()) {
        int status = exitSuccess;
        lock = lockDevice(scope, QStringLiteral("convert"), output, status);
        if (!lock)
            return status;
    }
    const DeviceFolder destination = scope.destination(!request.dryRun);
    attachExistingFiles(request.playlists,
                        generator.scanExistingPlaylists(QUrl::fromLocalFile(request.destination)));
    const QStringList stale = PlaylistWriteBatch::sweepStaleTemporaryFiles(destination, request.dryRun);
    if (!stale.isEmpty()) {
        output.note(QStringLiteral("%1 %2 temporary %3 an interrupted run left in %4")
                        .arg(request.dryRun ? QStringLiteral("would remove") : QStringLiteral("removed"))
                        .arg(stale.size())
                        .arg(stale.size() == 1 ? QStringLiteral("file") : QStringLiteral("files"))
                        .arg(destination.path()));
    }

    if (!request.dryRun)
        warnAboutTheVolume(request.destination, output);
    const QList<ExportItemResult> results = exportAll(request, destination, generator, output);
    const bool stopped = stopRequested().load();
    DotFileCleaner::Report cleaning;
    if (request.options.cleanDotFiles && !request.dryRun && !stopped)
        cleaning = DotFileCleaner().clean(destination);
    const auto failures = std::count_if(results.cbegin(), results.cend(),
                                        [](const ExportItemResult &r) { return !r.isSuccess; });
    const QList<PlaylistWarning> warnings = warningsFor(request.playlists, request.options, player);

    if (request.json) {
        QJsonArray array;
        for (const ExportItemResult &result : results)
            array.append(exportResultJson(result));
        QJsonObject report{{QStringLiteral("destination"), request.destination},
                           {QStringLiteral("results"), array},
                           {QStringLiteral("dotFilesRemoved"), cleaning.removed}};
        if (!cleaning.failures.isEmpty() || !cleaning.skippedMounts.isEmpty() || cleaning.refused)
            report.insert(QStringLiteral("dotFileCleaning"), cleaningJson(cleaning));
        if (!warnings.isEmpty())
            report.insert(QStringLiteral("warnings"), warningsJson(warnings));
        if (stopped)
            report.insert(QStringLiteral("stoppedBy"), stoppingSignalName());
        output.printJson(QJsonDocument(report));
    } else {
        for (const ExportItemResult &result : results)
            output.out() << outcomeLine(result, request.dryRun) << '\n';
        if (request.dryRun) {
            output.out() << results.size() << " playlist(s) would be written to " << request.destination
                         << " (dry run: nothing changed)\n";
        } else {
            output.out() << results.size() - failures << " of " << results.size()
                         << " playlist(s) written to " << request.destination;
            if (failures > 0)
                output.out() << ", " << failures << " failed";
            if (stopped)
                output.out() << "; dot files left alone: the run was stopped\n";
            else if (cleaning.skippedOutsideIPod)
                output.out() << "; dot files left alone: the folder is not on an iPod\n";
            else
                output.out() << "; " << cleaning.removed << " dot file(s) removed\n";
            printCleaningProblems(cleaning, output.out());
        }
        printWarnings(warnings, output);
        output.out().flush();
    }
    if (stopped)
        return reportStop(results.size() - failures, results.size(), QStringLiteral("playlists"), output);
    return failures > 0 || !cleaning.failures.isEmpty() ? exitSomeFailed : exitSuccess;
}

} // namespace kestrune::cli
