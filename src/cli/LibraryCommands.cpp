// `playlists` and `tracks`: what a database holds.
#include "Commands.h"
#include "JsonFormat.h"
#include "SourceDatabase.h"
#include "TextTable.h"
#include "export/ExistingFileMatching.h"
#include "export/RockboxGenerator.h"

#include <QJsonArray>
#include <QJsonObject>

namespace kestrune::cli {

namespace {

const QCommandLineOption jsonOption(QStringLiteral("json"), QStringLiteral("Print JSON."));

QString kindOf(const Playlist &playlist)
{
    QStringList kinds;
    if (playlist.isMaster)
        kinds << QStringLiteral("master");
    if (playlist.isSmart)
        kinds << QStringLiteral("smart");
    return kinds.isEmpty() ? QStringLiteral("-") : kinds.join(QStringLiteral(", "));
}

} // namespace

int runPlaylists(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    parser.addOption(jsonOption);
    if (const std::optional<int> stop = parseCommandLine(parser, QStringLiteral("playlists"), arguments, 1, output))
        return *stop;
    const std::optional<Source> source = resolveSource(parser.positionalArguments().first(), output);
    if (!source)
        return exitUsageOrInput;
    std::optional<ParseResult> library = loadDatabase(*source, output);
    if (!library)
        return exitUsageOrInput;
    if (source->playlistsFolder) {
        const RockboxGenerator generator;
        attachExistingFiles(library->playlists,
                            generator.scanExistingPlaylists(QUrl::fromLocalFile(*source->playlistsFolder)));
    }

    if (parser.isSet(jsonOption)) {
        QJsonArray playlists;
        for (const Playlist &playlist : std::as_const(library->playlists))
            playlists.append(playlistJson(playlist));
        output.printJson(QJsonDocument(QJsonObject{{QStringLiteral("database"), source->databasePath},
                                                   {QStringLiteral("trackCount"), library->tracks.size()},
                                                   {QStringLiteral("playlists"), playlists}}));
        return exitSuccess;
    }

    output.out() << "Database: " << source->databasePath << '\n'
                 << library->tracks.size() << " tracks, " << library->playlists.size() << " playlists\n\n";
    TextTable table({QStringLiteral("Playlist"), QStringLiteral("Tracks"), QStringLiteral("Duration"),
                     QStringLiteral("Kind"), QStringLiteral("On Rockbox")},
                    {false, true, true, false, false});
    for (const Playlist &playlist : std::as_const(library->playlists)) {
        table.addRow(
            {playlist.name, QString::number(playlist.trackCount()), playlist.formattedTotalDuration(),
             kindOf(playlist),
             playlist.existingRockboxFile ? playlist.existingRockboxFile->filename : QStringLiteral("-")});
    }
    table.print(output.out());
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
    const std::optional<ParseResult> library = loadDatabase(*source, output);
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
        table.addRow({QString::number(track.id), track.displayTitle(), track.displayArtist(),
                      track.formattedDuration(), track.rockboxPath()});
    }
    table.print(output.out());
    output.out().flush();
    return exitSuccess;
}

} // namespace kestrune::cli
