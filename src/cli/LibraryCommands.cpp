// `playlists` and `tracks`: what a database holds.
#include "Commands.h"
#include "JsonFormat.h"
#include "SourceDatabase.h"
#include "TextTable.h"
#include "PlayerReport.h"
#include "core/PlaylistFolders.h"
#include "export/ExistingFileMatching.h"
#include "export/RockboxGenerator.h"

#include <QJsonArray>
#include <QJsonObject>

namespace kestrune::cli {

namespace {

const QCommandLineOption jsonOption(QStringLiteral("json"), QStringLiteral("Print JSON."));

QString kindOf(const Playlist &playlist, bool onTheGo)
{
    QStringList kinds;
    if (playlist.isMaster)
        kinds << QStringLiteral("master");
    if (playlist.isSmart)
        kinds << QStringLiteral("smart");
    if (playlist.isFolder)
        kinds << QStringLiteral("folder");
    if (onTheGo)
        kinds << QStringLiteral("on-the-go");
    return kinds.isEmpty() ? QStringLiteral("-") : kinds.join(QStringLiteral(", "));
}

} // namespace

int runPlaylists(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    const QCommandLineOption onTheGo(QStringLiteral("on-the-go"));
    parser.addOptions({jsonOption, onTheGo});
    if (const std::optional<int> stop = parseCommandLine(parser, QStringLiteral("playlists"), arguments, 1, output))
        return *stop;
    const std::optional<Source> source = resolveSource(parser.positionalArguments().first(), output);
    if (!source)
        return exitUsageOrInput;
    ParseResult *library = loadDatabase(*source, output);
    if (!library)
        return exitUsageOrInput;
    const qsizetype databasePlaylists = library->playlists.size();
    if (parser.isSet(onTheGo))
        library->playlists += onTheGoPlaylists(*source, *library, output);
    if (source->playlistsFolder) {
        const RockboxGenerator generator;
        attachExistingFiles(library->playlists,
                            generator.scanExistingPlaylists(QUrl::fromLocalFile(*source->playlistsFolder)));
    }
    // Folder columns and keys appear only for a library that has folders, so other output stays as it was.
    const bool hasFolders = std::any_of(library->playlists.cbegin(), library->playlists.cend(),
                                        [](const Playlist &playlist) { return playlist.isFolder; });
    const QList<QStringList> folders = folderPaths(library->playlists);
    Player player = playerOf(*source);
    QList<Playlist> ordinary = library->playlists;
    ordinary.removeIf([](const Playlist &playlist) { return playlist.isMaster || playlist.isFolder; });
    const QList<PlaylistWarning> warnings = warningsFor(ordinary, ConversionOptions{}, player);

    if (parser.isSet(jsonOption)) {
        QJsonArray playlists;
        for (qsizetype i = 0; i < library->playlists.size(); ++i) {
            QJsonObject object = playlistJson(library->playlists.at(i));
            if (hasFolders) {
                object.insert(QStringLiteral("isFolder"), library->playlists.at(i).isFolder);
                object.insert(QStringLiteral("folderPath"), folders.at(i).join(QStringLiteral(" / ")));
            }
            if (i >= databasePlaylists)
                object.insert(QStringLiteral("isOnTheGo"), true);
            playlists.append(object);
        }
        QJsonObject json{{QStringLiteral("database"), source->databasePath},
                         {QStringLiteral("trackCount"), library->tracks.size()},
                         {QStringLiteral("playlists"), playlists}};
        if (!warnings.isEmpty())
            json.insert(QStringLiteral("warnings"), warningsJson(warnings));
        output.printJson(QJsonDocument(json));
        return exitSuccess;
    }

    output.out() << "Database: " << source->databasePath << '\n'
                 << library->tracks.size() << " tracks, " << library->playlists.size() << " playlists\n\n";
    QStringList header{QStringLiteral("Playlist"), QStringLiteral("Tracks"), QStringLiteral("Duration"),
                       QStringLiteral("Kind"), QStringLiteral("On Rockbox")};
    if (hasFolders)
        header.insert(1, QStringLiteral("Folder"));
    TextTable table(header, hasFolders ? QList<bool>{false, false, true, true, false, false}
                                       : QList<bool>{false, true, true, false, false});
    for (qsizetype i = 0; i < library->playlists.size(); ++i) {
        const Playlist &playlist = library->playlists.at(i);
        QStringList row{playlist.name, QString::number(playlist.trackCount()), playlist.formattedTotalDuration(),
                        kindOf(playlist, i >= databasePlaylists),
                        playlist.existingRockboxFile ? playlist.existingRockboxFile->filename : QStringLiteral("-")};
        if (hasFolders)
            row.insert(1, folders.at(i).isEmpty() ? QStringLiteral("-") : folders.at(i).join(QStringLiteral(" / ")));
        table.addRow(row);
    }
    table.print(output.out());
    printWarnings(warnings, output);
    output.out().flush();
    return exitSuccess;
}

int runTracks(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    const QCommandLineOption playlistOption(QStringLiteral("playlist"),
                                            QStringLiteral("Only this playlist's tracks, in its order."),
                                            QStringLiteral("name"));
    parser.addOptions({jsonOption, playlistOption});
    if (const std::optional<int> stop = parseCommandLine(parser, QStringLiteral("tracks"), arguments, 1, output))
        return *stop;
    const std::optional<Source> source = resolveSource(parser.positionalArguments().first(), output);
    if (!source)
        return exitUsageOrInput;
    const ParseResult *library = loadDatabase(*source, output);
    if (!library)
        return exitUsageOrInput;

    QList<Track> tracks;
    if (parser.isSet(playlistOption)) {
        const QString name = parser.value(playlistOption);
        const auto found = std::find_if(library->playlists.cbegin(), library->playlists.cend(),
                                        [&name](const Playlist &playlist) { return playlist.name == name; });
        if (found == library->playlists.cend())
            return output.fail(QStringLiteral("tracks: no playlist named '%1'").arg(name));
        tracks = found->tracks;
    } else {
        for (quint32 id : library->trackOrder)
            tracks.append(library->tracks.value(id));
    }

    if (parser.isSet(jsonOption)) {
        QJsonArray array;
        for (const Track &track : std::as_const(tracks))
            array.append(trackJson(track));
        output.printJson(QJsonDocument(QJsonObject{{QStringLiteral("tracks"), array}}));
        return exitSuccess;
    }
    TextTable table({QStringLiteral("Id"), QStringLiteral("Title"), QStringLiteral("Artist"),
                     QStringLiteral("Time"), QStringLiteral("Path on the player")},
                    {true, false, false, true, false});
    for (const Track &track : std::as_const(tracks)) {
        table.addRow({QString::number(track.id()), track.displayTitle(), track.displayArtist(),
                      track.formattedDuration(), track.rockboxPath()});
    }
    table.print(output.out());
    output.out().flush();
    return exitSuccess;
}

} // namespace kestrune::cli
