// `convert`: the conversion run without a window.
#include "Commands.h"
#include "JsonFormat.h"
#include "SourceDatabase.h"
#include "export/ExistingFileMatching.h"
#include "export/RockboxGenerator.h"

#include <QDir>
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
    const QString tracks = result.trackCount == 1 ? QStringLiteral("1 track")
                                                  : QStringLiteral("%1 tracks").arg(result.trackCount);
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

// What a run would write, without touching the disk.
QList<ExportItemResult> plannedResults(const ConvertRequest &request)
{
    QList<ExportItemResult> planned;
    for (const Playlist &playlist : request.playlists) {
        const QString filename = RockboxGenerator::playlistFilename(playlist, request.options);
        planned.append(ExportItemResult{.playlistName = playlist.name,
                                        .filename = filename,
                                        .fileURL = QUrl::fromLocalFile(request.destination + u'/' + filename),
                                        .trackCount = int(playlist.tracks.size()),
                                        .isSuccess = true,
                                        .isUpdate = playlist.existingRockboxFile.has_value()});
    }
    return planned;
}

QList<ExportItemResult> exportAll(const ConvertRequest &request, const RockboxGenerator &generator,
                                  CliOutput &output)
{
    const bool showProgress = standardErrorIsTerminal() && !request.json;
    const QUrl folder = QUrl::fromLocalFile(request.destination);
    QList<ExportItemResult> results;
    for (const Playlist &playlist : request.playlists) {
        if (showProgress) {
            output.err() << QStringLiteral("\r\x1b[K[%1/%2] %3")
                                .arg(results.size() + 1)
                                .arg(request.playlists.size())
                                .arg(playlist.name);
            output.err().flush();
        }
        results.append(generator.exportPlaylist(playlist, folder, request.options));
    }
    generator.flushToDisk(folder);
    if (showProgress) {
        output.err() << "\r\x1b[K";
        output.err().flush();
    }
    return results;
}

} // namespace

int runConvert(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    const QCommandLineOption dest(QStringLiteral("dest"),
                                  QStringLiteral("Write here instead of SOURCE/Playlists."),
                                  QStringLiteral("dir"));
    const QCommandLineOption playlist(QStringLiteral("playlist"),
                                      QStringLiteral("Export this playlist (repeatable)."),
                                      QStringLiteral("name"));
    const QCommandLineOption includeMaster(QStringLiteral("include-master"),
                                           QStringLiteral("Also export the master playlist."));
    const QCommandLineOption m3u(QStringLiteral("m3u"), QStringLiteral("Use the .m3u extension."));
    const QCommandLineOption noExtinf(QStringLiteral("no-extinf"),
                                      QStringLiteral("Write bare paths without #EXTINF lines."));
    const QCommandLineOption prefix(
        QStringLiteral("prefix"), QStringLiteral("Put TEXT in front of every path."), QStringLiteral("text"));
    const QCommandLineOption noSanitize(QStringLiteral("no-sanitize"),
                                        QStringLiteral("Keep file names as the playlists are named."));
    const QCommandLineOption noClean(QStringLiteral("no-clean"), QStringLiteral("Leave dot files in place."));
    const QCommandLineOption dryRun(QStringLiteral("dry-run"),
                                    QStringLiteral("Say what would be written; change nothing."));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print JSON."));
    parser.addOptions(
        {dest, playlist, includeMaster, m3u, noExtinf, prefix, noSanitize, noClean, dryRun, json});
    if (!parseCommandLine(parser, QStringLiteral("convert"), arguments, 1, output))
        return exitUsageOrInput;

    const std::optional<Source> source = resolveSource(parser.positionalArguments().first(), output);
    if (!source)
        return exitUsageOrInput;
    ConvertRequest request;
    request.destination = parser.isSet(dest) ? QDir(parser.value(dest)).absolutePath()
                                             : source->playlistsFolder.value_or(QString());
    if (request.destination.isEmpty())
        return output.fail(QStringLiteral("convert: SOURCE is a bare database file; give --dest DIR"));
    std::optional<ParseResult> library = loadDatabase(*source, output);
    if (!library)
        return exitUsageOrInput;

    const RockboxGenerator generator;
    const std::optional<QList<Playlist>> chosen =
        choosePlaylists(library->playlists, parser.values(playlist), parser.isSet(includeMaster), output);
    if (!chosen)
        return exitUsageOrInput;
    request.playlists = *chosen;
    attachExistingFiles(request.playlists,
                        generator.scanExistingPlaylists(QUrl::fromLocalFile(request.destination)));
    request.options = ConversionOptions{.destinationFolder = QUrl::fromLocalFile(request.destination),
                                        .extendedM3U = !parser.isSet(noExtinf),
                                        .useM3U8Extension = !parser.isSet(m3u),
                                        .customPathPrefix = parser.value(prefix),
                                        .sanitizeFilenames = !parser.isSet(noSanitize),
                                        .includeMasterPlaylist = parser.isSet(includeMaster),
                                        .cleanDotFiles = !parser.isSet(noClean)};
    request.dryRun = parser.isSet(dryRun);
    request.json = parser.isSet(json);

    const QList<ExportItemResult> results =
        request.dryRun ? plannedResults(request) : exportAll(request, generator, output);
    const int dotFilesRemoved = (request.options.cleanDotFiles && !request.dryRun)
                                    ? generator.cleanDotFiles(QUrl::fromLocalFile(request.destination))
                                    : 0;
    const auto failures = std::count_if(results.cbegin(), results.cend(),
                                        [](const ExportItemResult &r) { return !r.isSuccess; });

    if (request.json) {
        QJsonArray array;
        for (const ExportItemResult &result : results)
            array.append(exportResultJson(result));
        output.printJson(QJsonDocument(QJsonObject{{QStringLiteral("destination"), request.destination},
                                                   {QStringLiteral("results"), array},
                                                   {QStringLiteral("dotFilesRemoved"), dotFilesRemoved}}));
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
            output.out() << "; " << dotFilesRemoved << " dot file(s) removed\n";
        }
        output.out().flush();
    }
    return failures > 0 ? exitSomeFailed : exitSuccess;
}

} // namespace kestrune::cli
