// `files` and `clean`: a playlists folder as it is.
#include "Commands.h"
#include "DeviceSession.h"
#include "JsonFormat.h"
#include "TextTable.h"
#include "device/IPodDevice.h"
#include "export/PlaylistWriteBatch.h"
#include "export/RockboxGenerator.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

namespace kestrune::cli {

namespace {

std::optional<QString> existingFolder(QCommandLineParser &parser, CliOutput &output)
{
    const QString folder = parser.positionalArguments().first();
    if (!QFileInfo(folder).isDir()) {
        output.fail(QFileInfo::exists(folder) ? QStringLiteral("'%1' is not a folder").arg(folder)
                                              : QStringLiteral("'%1' does not exist").arg(folder),
                    exitUsageOrInput, folder);
        return std::nullopt;
    }
    return QDir(folder).absolutePath();
}

} // namespace

int runFiles(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print JSON."));
    parser.addOption(json);
    if (const std::optional<int> stop = parseCommandLine(parser, QStringLiteral("files"), arguments, 1, output))
        return *stop;
    const std::optional<QString> folder = existingFolder(parser, output);
    if (!folder)
        return exitUsageOrInput;
    const QList<RockboxFileItem> items = RockboxGenerator().listPlaylists(QUrl::fromLocalFile(*folder));

    if (parser.isSet(json)) {
        QJsonArray array;
        for (const RockboxFileItem &item : items)
            array.append(fileItemJson(item));
        output.printJson(QJsonDocument(
            QJsonObject{{QStringLiteral("folder"), *folder}, {QStringLiteral("files"), array}}));
        return exitSuccess;
    }
    TextTable table({QStringLiteral("File"), QStringLiteral("Size"), QStringLiteral("Modified")},
                    {false, true, false});
    for (const RockboxFileItem &item : items) {
        table.addRow({item.name, item.sizeBytes ? formattedByteCount(*item.sizeBytes) : QStringLiteral("-"),
                      item.modificationDate
                          ? item.modificationDate->toString(QStringLiteral("yyyy-MM-dd HH:mm"))
                          : QStringLiteral("-")});
    }
    table.print(output.out());
    output.out() << counted(items.size(), "playlist file", "playlist files") << " in " << *folder << '\n';
    output.out().flush();
    return exitSuccess;
}

int runClean(const QStringList &arguments, CliOutput &output)
{
    QCommandLineParser parser;
    if (const std::optional<int> stop = parseCommandLine(parser, QStringLiteral("clean"), arguments, 1, output))
        return *stop;
    const std::optional<QString> folder = existingFolder(parser, output);
    if (!folder)
        return exitUsageOrInput;
    const WriteScope scope = writeScopeFor(*folder, false);
    if (scope.root.isOpen() && !scope.onIPod) {
        return output.fail(QStringLiteral("clean: '%1' is not on an iPod (neither it nor a folder above it "
                                          "holds iPod_Control); nothing removed")
                               .arg(*folder),
                           exitUsageOrInput, *folder);
    }
    int status = exitSuccess;
    const std::optional<DeviceLock> lock = lockDevice(scope, QStringLiteral("clean"), output, status);
    if (!lock)
        return status;
    const DeviceFolder root = scope.destination(false);
    if (!root.isOpen())
        return output.fail(QStringLiteral("clean: %1").arg(*root.error()), exitUsageOrInput, root.path());
    const QStringList stale = PlaylistWriteBatch::sweepStaleTemporaryFiles(root);
    const DotFileCleaner::Report report = DotFileCleaner().clean(root);
    const qsizetype removed = report.removed + stale.size();
    output.out() << removed << (removed == 1 ? " dot file removed from " : " dot files removed from ") << *folder
                 << '\n';
    printCleaningProblems(report, output.out());
    output.out().flush();
    if (!report.failures.isEmpty()) {
        return output.fail(QStringLiteral("clean: %1 could not be removed (listed above)")
                               .arg(report.failures.size() == 1 ? QStringLiteral("1 dot file")
                                                                : QStringLiteral("%1 dot files").arg(report.failures.size())),
                           exitSomeFailed, *folder);
    }
    return exitSuccess;
}

} // namespace kestrune::cli
