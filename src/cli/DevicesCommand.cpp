// `devices`: the iPods among the mounted volumes, or among the entries of a folder.
#include "Commands.h"
#include "TextTable.h"
#include "device/IPodDetector.h"
#include "device/RockboxPlayer.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

namespace kestrune::cli {

namespace {

QJsonValue jsonSize(const std::optional<qint64> &bytes)
{
    return bytes ? QJsonValue(*bytes) : QJsonValue(QJsonValue::Null);
}

QString playerText(const RockboxPlayer &player)
{
    return QStringLiteral("%1, %2 entries%3")
        .arg(player.target.value_or(QStringLiteral("unknown")))
        .arg(player.playlistLimit)
        .arg(player.limitSource == RockboxPlayer::LimitSource::assumed ? QStringLiteral(" (assumed)") : QString());
}

QString spaceText(const IPodDevice &device)
{
    if (!device.freeDiskSpace || !device.totalDiskSpace)
        return QStringLiteral("-");
    return QStringLiteral("%1 free of %2").arg(*device.formattedFreeSpace(), *device.formattedTotalSpace());
}

} // namespace

int runDevices(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    const QCommandLineOption volumes(
        QStringLiteral("volumes"),
        QStringLiteral("Look among the entries of DIR instead of the mounted volumes."),
        QStringLiteral("dir"));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print JSON."));
    parser.addOptions({volumes, json});
    if (const std::optional<int> stop = parseCommandLine(parser, QStringLiteral("devices"), arguments, 0, output))
        return *stop;
    if (parser.isSet(volumes) && !QFileInfo(parser.value(volumes)).isDir())
        return output.fail(QStringLiteral("'%1' is not a folder").arg(parser.value(volumes)));

    const CandidateSource candidates = parser.isSet(volumes)
                                           ? entriesOfFolder(QDir(parser.value(volumes)).absolutePath())
                                           : systemCandidateSource();
    const IPodDetector detector(IPodDetector::Services{candidates, systemVolumeInfo, nullptr});
    const QList<IPodDevice> &devices = detector.detectedDevices();
    for (const QString &refused : detector.refusedLocations())
        output.warn(refused);

    if (parser.isSet(json)) {
        QJsonArray array;
        for (const IPodDevice &device : devices) {
            const RockboxPlayer player = readRockboxPlayer(device.mountURL.toLocalFile());
            array.append(QJsonObject{{QStringLiteral("name"), device.name},
                                     {QStringLiteral("mountPath"), device.mountURL.toLocalFile()},
                                     {QStringLiteral("database"), device.itunesDBURL.toLocalFile()},
                                     {QStringLiteral("playlistsFolder"), device.playlistsURL.toLocalFile()},
                                     {QStringLiteral("totalDiskSpace"), jsonSize(device.totalDiskSpace)},
                                     {QStringLiteral("freeDiskSpace"), jsonSize(device.freeDiskSpace)},
                                     {QStringLiteral("rockboxTarget"),
                                      player.target ? QJsonValue(*player.target) : QJsonValue(QJsonValue::Null)},
                                     {QStringLiteral("playlistLimit"), player.playlistLimit}});
        }
        output.printJson(QJsonDocument(QJsonObject{{QStringLiteral("devices"), array}}));
        return exitSuccess;
    }
    if (devices.isEmpty()) {
        output.out() << "No iPod found." << Qt::endl;
        return exitSuccess;
    }
    TextTable table({QStringLiteral("Name"), QStringLiteral("Mounted at"), QStringLiteral("Database"),
                     QStringLiteral("Playlists folder"), QStringLiteral("Space"), QStringLiteral("Rockbox")});
    for (const IPodDevice &device : devices) {
        table.addRow({device.name, device.mountURL.toLocalFile(), device.itunesDBURL.toLocalFile(),
                      device.playlistsURL.toLocalFile(), spaceText(device),
                      playerText(readRockboxPlayer(device.mountURL.toLocalFile()))});
    }
    table.print(output.out());
    output.out().flush();
    return exitSuccess;
}

} // namespace kestrune::cli
