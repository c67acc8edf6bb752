// `check`: how the playlists on a device will play, and what else on it needs the user's attention.
#include "Commands.h"
#include "PlayerReport.h"
#include "SourceDatabase.h"
#include "TextTable.h"
#include "device/MountTable.h"
#include "export/DotFileCleaner.h"
#include "export/ExistingFileMatching.h"
#include "export/PlaylistFileCheck.h"
#include "export/RockboxGenerator.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>

namespace kestrune::cli {

namespace {

struct FileReport {
    QString name;
    PlaylistFileCheck check;
    bool matchedByLibrary = false;
};

struct DeviceReport {
    QList<FileReport> files;
    QStringList playlistsWithoutFile;
    qsizetype dotFiles = 0;
    bool volumeWithoutUtf8Names = false;

    [[nodiscard]] bool healthy() const
    {
        return std::all_of(files.cbegin(), files.cend(), [](const FileReport &file) { return file.check.playsWhole(); });
    }
};

DeviceReport examine(const Source &source, const ParseResult &library, Player &player, CliOutput &output)
{
    DeviceReport report;
    const QString root = *source.deviceRoot;
    const QString folder = *source.playlistsFolder;
    const QList<ExistingRockboxFile> existing = RockboxGenerator().scanExistingPlaylists(QUrl::fromLocalFile(folder));

    QStringList names;
    for (const Playlist &playlist : library.playlists) {
        if (!playlist.isMaster && !playlist.isFolder)
            names.append(playlist.name);
    }
    const QSet<QString> libraryKeys = playlistMatchKeys(names);
    for (const QString &name : std::as_const(names)) {
        const QSet<QString> own = playlistMatchKeys({name});
        if (std::none_of(existing.cbegin(), existing.cend(),
                         [&own](const ExistingRockboxFile &file) { return belongsToAny(file, own); }))
            report.playlistsWithoutFile.append(name);
    }

    DeviceFileIndex &files = *player.files;
    const QString relativeFolder = QDir(root).relativeFilePath(folder);
    for (const ExistingRockboxFile &file : existing) {
        output.progress(QStringLiteral("Checking %1 (%2/%3)")
                            .arg(file.filename)
                            .arg(report.files.size() + 1)
                            .arg(existing.size()));
        report.files.append(FileReport{file.filename,
                                       checkPlaylistFile(files, root, relativeFolder + u'/' + file.filename,
                                                         player.rockbox.playlistLimit),
                                       belongsToAny(file, libraryKeys)});
    }
    output.endProgress();
    report.dotFiles = DotFileCleaner::find(root).size();
    const std::optional<MountEntry> mount = mountHolding(root, systemMountTable());
    report.volumeWithoutUtf8Names = mount && storesNamesWithoutUtf8(*mount);
    return report;
}

void printReport(const DeviceReport &report, const Source &source, const Player &player, CliOutput &output)
{
    QTextStream &out = output.out();
    out << "Device: " << *source.deviceRoot << '\n' << describePlayer(player.rockbox) << "\n\n";
    if (report.files.isEmpty()) {
        out << "No playlist files in " << *source.playlistsFolder << '\n';
    } else {
        out << "Playlist files in " << *source.playlistsFolder << ":\n";
        TextTable table({QStringLiteral("File"), QStringLiteral("Entries"), QStringLiteral("Missing"),
                         QStringLiteral("Too long"), QStringLiteral("Past limit"), QStringLiteral("In library")},
                        {false, true, true, true, true, false});
        for (const FileReport &file : report.files) {
            table.addRow({file.name, QString::number(file.check.entries), QString::number(file.check.unresolved),
                          QString::number(file.check.tooLong), QString::number(file.check.pastLimit),
                          file.matchedByLibrary ? QStringLiteral("yes") : QStringLiteral("no")});
        }
        table.print(out);
    }
    out << '\n';
    if (!report.playlistsWithoutFile.isEmpty())
        out << "Library playlists without a file yet: " << report.playlistsWithoutFile.join(QStringLiteral(", ")) << '\n';
    if (report.dotFiles > 0)
        out << "macOS dot files: " << report.dotFiles << " ('kestrune-cli clean " << *source.deviceRoot << "' removes them)\n";
    if (report.volumeWithoutUtf8Names)
        out << "The volume is mounted without UTF-8 file names: names with accents are stored wrongly.\n";
    out << (report.healthy() ? "Every entry of every playlist file will play.\n"
                             : "Some entries will not play: see Missing, Too long and Past limit above.\n");
    out.flush();
}

QJsonObject reportJson(const DeviceReport &report, const Source &source, const Player &player)
{
    QJsonArray files;
    for (const FileReport &file : report.files) {
        files.append(QJsonObject{{QStringLiteral("name"), file.name},
                                 {QStringLiteral("entries"), file.check.entries},
                                 {QStringLiteral("unresolved"), file.check.unresolved},
                                 {QStringLiteral("tooLong"), file.check.tooLong},
                                 {QStringLiteral("pastLimit"), file.check.pastLimit},
                                 {QStringLiteral("matchedByLibrary"), file.matchedByLibrary}});
    }
    return QJsonObject{
        {QStringLiteral("device"), *source.deviceRoot},
        {QStringLiteral("rockboxTarget"),
         player.rockbox.target ? QJsonValue(*player.rockbox.target) : QJsonValue(QJsonValue::Null)},
        {QStringLiteral("playlistLimit"), player.rockbox.playlistLimit},
        {QStringLiteral("files"), files},
        {QStringLiteral("playlistsWithoutFile"), QJsonArray::fromStringList(report.playlistsWithoutFile)},
        {QStringLiteral("dotFiles"), report.dotFiles},
        {QStringLiteral("volumeWithoutUtf8Names"), report.volumeWithoutUtf8Names},
        {QStringLiteral("healthy"), report.healthy()},
    };
}

} // namespace

int runCheck(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    const QCommandLineOption json(QStringLiteral("json"));
    parser.addOption(json);
    if (const std::optional<int> stop = parseCommandLine(parser, QStringLiteral("check"), arguments, 1, output))
        return *stop;
    const std::optional<Source> source = resolveSource(parser.positionalArguments().first(), output);
    if (!source)
        return exitUsageOrInput;
    if (!source->deviceRoot)
        return output.fail(QStringLiteral("check: SOURCE must be an iPod root or backup folder, not a bare database"));
    const ParseResult *library = loadDatabase(*source, output);
    if (!library)
        return exitUsageOrInput;
    Player player = playerOf(*source);
    player.files = DeviceFileIndex(*source->deviceRoot); // also without music: then every entry is missing

    const DeviceReport report = examine(*source, *library, player, output);
    if (parser.isSet(json))
        output.printJson(QJsonDocument(reportJson(report, *source, player)));
    else
        printReport(report, *source, player, output);
    return report.healthy() ? exitSuccess : exitSomeFailed;
}

} // namespace kestrune::cli
