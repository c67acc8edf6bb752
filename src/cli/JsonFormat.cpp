#include "JsonFormat.h"

#include <QJsonArray>

namespace kestrune::cli {

QJsonObject trackJson(const Track &track)
{
    return QJsonObject{
        {QStringLiteral("id"), qint64(track.id())},
        {QStringLiteral("title"), track.title()},
        {QStringLiteral("artist"), track.artist()},
        {QStringLiteral("album"), track.album()},
        {QStringLiteral("genre"), track.genre()},
        {QStringLiteral("composer"), track.composer()},
        {QStringLiteral("ipodPath"), track.ipodPath()},
        {QStringLiteral("fileSize"), qint64(track.fileSize())},
        {QStringLiteral("totalTimeMs"), qint64(track.totalTimeMs())},
        {QStringLiteral("trackNumber"), qint64(track.trackNumber())},
        {QStringLiteral("year"), qint64(track.year())},
        {QStringLiteral("bitrate"), qint64(track.bitrate())},
        {QStringLiteral("rockboxPath"), track.rockboxPath()},
    };
}

QJsonObject playlistJson(const Playlist &playlist)
{
    QJsonArray trackIds;
    for (quint32 id : playlist.trackIds)
        trackIds.append(qint64(id));
    return QJsonObject{
        {QStringLiteral("name"), playlist.name},
        {QStringLiteral("dbId"), QString::number(playlist.dbId)},
        {QStringLiteral("isMaster"), playlist.isMaster},
        {QStringLiteral("isSmart"), playlist.isSmart},
        {QStringLiteral("trackIds"), trackIds},
        {QStringLiteral("trackCount"), playlist.trackCount()},
        {QStringLiteral("totalDurationSeconds"), playlist.totalDurationSeconds()},
        {QStringLiteral("existingFile"), playlist.existingRockboxFile
                                             ? QJsonValue(playlist.existingRockboxFile->filename)
                                             : QJsonValue(QJsonValue::Null)},
    };
}

QJsonObject exportResultJson(const ExportItemResult &result)
{
    QJsonObject json{
        {QStringLiteral("playlistName"), result.playlistName},
        {QStringLiteral("filename"), result.filename},
        {QStringLiteral("path"), result.fileURL.toLocalFile()},
        {QStringLiteral("trackCount"), result.trackCount},
        {QStringLiteral("isSuccess"), result.isSuccess},
        {QStringLiteral("isUpdate"), result.isUpdate},
        {QStringLiteral("errorMessage"),
         result.errorMessage ? QJsonValue(*result.errorMessage) : QJsonValue(QJsonValue::Null)},
    };
    json.insert(QStringLiteral("status"), result.status());
    if (result.intendedFilename)
        json.insert(QStringLiteral("intendedFilename"), *result.intendedFilename);
    if (!result.reason.isEmpty())
        json.insert(QStringLiteral("reason"), result.reason);
    return json;
}

QJsonObject cleaningJson(const DotFileCleaner::Report &report)
{
    QJsonArray failures;
    for (const DotFileCleaner::Failure &failure : report.failures)
        failures.append(QJsonObject{{QStringLiteral("path"), failure.path}, {QStringLiteral("reason"), failure.reason}});
    QJsonObject json{{QStringLiteral("removed"), report.removed}};
    if (!failures.isEmpty())
        json.insert(QStringLiteral("failures"), failures);
    if (!report.skippedMounts.isEmpty())
        json.insert(QStringLiteral("skippedMounts"), QJsonArray::fromStringList(report.skippedMounts));
    if (report.refused)
        json.insert(QStringLiteral("refused"), *report.refused);
    return json;
}

void printCleaningProblems(const DotFileCleaner::Report &report, QTextStream &out)
{
    for (const DotFileCleaner::Failure &failure : report.failures)
        out << "  could not remove " << failure.path << ": " << failure.reason << '\n';
    for (const QString &mount : report.skippedMounts)
        out << "  left alone " << mount << ": another file system is mounted there\n";
    if (report.refused)
        out << "  dot files left alone: " << *report.refused << '\n';
}

QJsonObject fileItemJson(const RockboxFileItem &item)
{
    QJsonObject json{
        {QStringLiteral("name"), item.name},
        {QStringLiteral("baseName"), item.baseName},
        {QStringLiteral("fileURL"), item.fileURL.toLocalFile()},
        {QStringLiteral("sizeBytes"),
         item.sizeBytes ? QJsonValue(*item.sizeBytes) : QJsonValue(QJsonValue::Null)},
        {QStringLiteral("modificationDate"), item.modificationDate
                                                 ? QJsonValue(item.modificationDate->toString(Qt::ISODate))
                                                 : QJsonValue(QJsonValue::Null)},
    };
    if (!item.nameBytes.isEmpty()) {
        json.insert(QStringLiteral("nameIsUtf8"), false);
        json.insert(QStringLiteral("nameBytes"), QString::fromLatin1(item.nameBytes.toHex()));
    }
    return json;
}

} // namespace kestrune::cli
