// `files` and `clean`: a playlists folder as it is.
#include "Commands.h"
#include "JsonFormat.h"
#include "TextTable.h"
#include "device/IPodDevice.h"
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
        output.fail(QStringLiteral("'%1' is not a folder").arg(folder));
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
    output.out() << items.size() << " playlist file(s) in " << *folder << '\n';
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
    const DotFileCleaner::Report report = RockboxGenerator().cleanDotFileTree(QUrl::fromLocalFile(*folder));
    if (report.skippedOutsideIPod) {
        return output.fail(QStringLiteral("clean: '%1' is not on an iPod (neither it nor a folder above it "
                                          "holds iPod_Control); nothing removed")
                               .arg(*folder));
    }
    output.out() << report.removed << " dot file(s) removed from " << *folder << '\n';
    output.out().flush();
    if (report.failed > 0)
        return output.fail(QStringLiteral("clean: %1 dot file(s) could not be removed").arg(report.failed),
                           exitSomeFailed);
    return exitSuccess;
}

} // namespace kestrune::cli
