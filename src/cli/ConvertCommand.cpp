// `convert`: the conversion run without a window.
#include "Commands.h"
#include "DeviceSession.h"
#include "Interruption.h"
#include "JsonFormat.h"
#include "PlayerReport.h"
#include "PlaylistRunOutput.h"
#include "SourceDatabase.h"
#include "core/PlaylistFolders.h"
#include "device/MountTable.h"
#include "export/DeviceRecord.h"
#include "export/ExistingFileMatching.h"
#include "export/M3UContent.h"
#include "export/RockboxGenerator.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>

namespace kestrune::cli {

namespace {

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

std::optional<PlaylistRunRequest> playlistRequest(const QCommandLineParser &parser, const PlaylistRequestOptions &names,
                                                  const Source &source, ParseResult &library, const QString &destination,
                                                  CliOutput &output)
{
    const auto isSet = [&parser](const QString &name) { return !name.isEmpty() && parser.isSet(name); };
    if (isSet(names.onTheGo))
        library.playlists += onTheGoPlaylists(source, library, output);
    const QHash<quint64, int> libraryIds = libraryIdCounts(library.playlists);
    if (isSet(names.folders)) // the player's playlists menu shows no sub-folders
        library.playlists = flattenedFolders(library.playlists);
    const QStringList named = names.playlist.isEmpty() ? QStringList() : parser.values(names.playlist);
    const std::optional<QList<Playlist>> chosen =
        choosePlaylists(library.playlists, named, isSet(names.includeMaster), output);
    if (!chosen)
        return std::nullopt;
    PlaylistRunRequest request;
    const Player player = playerOf(source);
    for (const Playlist &each : *chosen)
        request.playlists += isSet(names.splitLong) ? splitToLimit(each, player.rockbox.playlistLimit) : QList<Playlist>{each};
    request.options = ConversionOptions{.destinationFolder = QUrl::fromLocalFile(destination),
                                        .extendedM3U = !isSet(names.noExtinf),
                                        .useM3U8Extension = !isSet(names.m3u),
                                        .customPathPrefix = parser.value(names.prefix),
                                        .sanitizeFilenames = !isSet(names.noSanitize),
                                        .includeMasterPlaylist = isSet(names.includeMaster),
                                        .cleanDotFiles = !isSet(names.noClean)};
    if (library.looksTruncated && !isSet(names.force))
        request.keepExistingFilesReason = QStringLiteral("not overwritten, since the database looks truncated; give "
                                                         "--force to overwrite it anyway");
    request.mirror = isSet(names.mirror);
    request.libraryIncomplete = library.looksTruncated || library.playlistsIncomplete;
    request.libraryIds = libraryIds;
    if (!named.isEmpty()) {
        QSet<quint64> ids;
        for (const Playlist &playlist : *chosen)
            ids.insert(playlist.dbId);
        request.mirrorOnlyIds = ids;
    }
    request.dryRun = isSet(names.dryRun);
    attachExistingFiles(request.playlists, RockboxGenerator().scanExistingPlaylists(QUrl::fromLocalFile(destination)));
    return request;
}

std::optional<QString> mirrorProblem(const WriteScope &scope)
{
    if (!scope.onIPod || !scope.root.isOpen())
        return QStringLiteral("--mirror works only on an iPod, where the record of what Kestrune wrote is kept");
    const DeviceFolder rockbox = rockboxFolderOf(scope.root);
    if (!rockbox.isOpen())
        return QStringLiteral("--mirror needs the device's .rockbox folder, where the record of what Kestrune wrote "
                              "is kept: %1").arg(*rockbox.error());
    return std::nullopt;
}

std::optional<QString> prefixProblem(const QString &prefix)
{
    if (const std::optional<QString> character = controlCharacterInPrefix(prefix))
        return QStringLiteral("--prefix holds the control character %1, which would break every entry of every "
                              "playlist").arg(*character);
    return std::nullopt;
}

int runConvert(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    const auto flag = [](const char *name) { return QCommandLineOption(QString::fromLatin1(name)); };
    const auto valued = [](const char *name) {
        return QCommandLineOption(QString::fromLatin1(name), QString(), QStringLiteral("value"));
    };
    parser.addOptions({valued("dest"), valued("playlist"), flag("include-master"), flag("m3u"), flag("no-extinf"),
                       valued("prefix"), flag("no-sanitize"), flag("no-clean"), flag("force"), flag("dry-run"),
                       flag("json"), flag("split-long"), flag("on-the-go"), valued("folders"), flag("mirror")});
    if (const std::optional<int> stop = parseCommandLine(parser, QStringLiteral("convert"), arguments, 1, output))
        return *stop;
    if (parser.isSet(QStringLiteral("folders")) && parser.value(QStringLiteral("folders")) != QLatin1StringView("flatten"))
        return output.fail(QStringLiteral("convert: --folders takes 'flatten', not '%1' (see 'kestrune-cli "
                                          "convert --help')")
                               .arg(parser.value(QStringLiteral("folders"))));
    if (const std::optional<QString> problem = prefixProblem(parser.value(QStringLiteral("prefix"))))
        return output.fail(QStringLiteral("convert: %1 (see 'kestrune-cli convert --help')").arg(*problem));

    const std::optional<Source> source = resolveSource(parser.positionalArguments().first(), output);
    if (!source)
        return exitUsageOrInput;
    const QString destination = parser.isSet(QStringLiteral("dest")) ? QDir(parser.value(QStringLiteral("dest"))).absolutePath()
                                                                      : source->playlistsFolder.value_or(QString());
    if (destination.isEmpty())
        return output.fail(QStringLiteral("convert: SOURCE is a bare database file; give --dest DIR"));
    const bool dryRun = parser.isSet(QStringLiteral("dry-run"));
    // One run per device: the lock is taken on the root everything below is then reached from. A dry run
    // writes nothing, and looks only when the folder is there already.
    const WriteScope scope = writeScopeFor(destination, !dryRun);
    if (parser.isSet(QStringLiteral("mirror"))) {
        if (const std::optional<QString> problem = mirrorProblem(scope))
            return output.fail(QStringLiteral("convert: ") + *problem, exitUsageOrInput, destination);
    }
    ParseResult *library = loadDatabase(*source, output);
    if (!library)
        return exitUsageOrInput;
    const std::optional<PlaylistRunRequest> request =
        playlistRequest(parser, PlaylistRequestOptions::all(), *source, *library, destination, output);
    if (!request)
        return exitUsageOrInput;

    std::optional<DeviceLock> lock;
    if (!dryRun || scope.root.isOpen()) {
        int status = exitSuccess;
        lock = lockDevice(scope, QStringLiteral("convert"), output, status);
        if (!lock)
            return status;
    }
    if (!dryRun)
        warnAboutTheVolume(destination, output);
    const qsizetype total = request->playlists.size();
    const PlaylistRunReport report = runPlaylists(
        scope, *request, RockboxGenerator(),
        [&](qsizetype count) {
            output.progress(QStringLiteral("[%1/%2] %3").arg(count).arg(total).arg(request->playlists.at(count - 1).name));
        },
        &stopRequested());
    output.endProgress();
    if (!report.staleTemporaryFiles.isEmpty()) {
        output.note(QStringLiteral("%1 %2 an interrupted run left in %3")
                        .arg(dryRun ? QStringLiteral("would remove") : QStringLiteral("removed"),
                             counted(report.staleTemporaryFiles.size(), "temporary file", "temporary files"), destination));
    }
    Player player = playerOf(*source);
    const QList<PlaylistWarning> warnings = warningsFor(request->playlists, request->options, player);
    if (parser.isSet(QStringLiteral("json"))) {
        QJsonObject json = playlistRunJson(report, destination);
        if (!warnings.isEmpty())
            json.insert(QStringLiteral("warnings"), warningsJson(warnings));
        if (report.stopped)
            json.insert(QStringLiteral("stoppedBy"), stoppingSignalName());
        output.printJson(QJsonDocument(json));
    } else {
        printPlaylistRun(report, destination, dryRun, output);
        printWarnings(warnings, output);
        output.out().flush();
    }
    const qsizetype done = std::count_if(report.results.cbegin(), report.results.cend(),
                                         [](const ExportItemResult &r) { return r.isSuccess; });
    if (report.stopped)
        return reportStop(done, report.results.size(), QStringLiteral("playlists"), output);
    return playlistRunStatus(report);
}

} // namespace kestrune::cli
