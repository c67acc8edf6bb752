#include "PlayerReport.h"

#include <QJsonObject>

namespace kestrune::cli {

namespace {

QString warningText(const PlaylistWarning &warning)
{
    switch (warning.kind) {
    case PlaylistWarning::Kind::overLimit:
        return QStringLiteral("%1 entries, but the player keeps only the first %2").arg(warning.count).arg(warning.limit);
    case PlaylistWarning::Kind::longPaths:
        return QStringLiteral("%1 longer than the %2 bytes the player can open")
            .arg(counted(warning.count, "track path", "track paths"))
            .arg(warning.limit);
    case PlaylistWarning::Kind::longFileName:
        return QStringLiteral("the playlist's own path is longer than the %1 bytes the player can open")
            .arg(warning.limit);
    case PlaylistWarning::Kind::missingFiles:
        return QStringLiteral("%1 missing on the device; the player skips %2")
            .arg(counted(warning.count, "track file", "track files"),
                 warning.count == 1 ? QStringLiteral("it") : QStringLiteral("them"));
    }
    return {};
}

} // namespace

Player playerOf(const Source &source)
{
    Player player;
    if (!source.deviceRoot)
        return player;
    player.rockbox = readRockboxPlayer(*source.deviceRoot);
    DeviceFileIndex files(*source.deviceRoot);
    if (files.contains(QStringLiteral("iPod_Control/Music"))) // a backup may hold the database alone
        player.files = std::move(files);
    return player;
}

QString describePlayer(const RockboxPlayer &player)
{
    const QString limit = QStringLiteral("up to %1 entries per playlist").arg(player.playlistLimit);
    switch (player.limitSource) {
    case RockboxPlayer::LimitSource::userSetting:
        return QStringLiteral("Rockbox target %1: %2 (your setting)")
            .arg(player.target.value_or(QStringLiteral("unknown")), limit);
    case RockboxPlayer::LimitSource::targetDefault:
        return QStringLiteral("Rockbox target %1: %2 (the target's default)").arg(*player.target, limit);
    case RockboxPlayer::LimitSource::assumed:
        break;
    }
    return QStringLiteral("Rockbox target %1: assuming %2")
        .arg(player.target.value_or(QStringLiteral("unknown")),
             QStringLiteral("up to %1 entries per playlist").arg(player.playlistLimit));
}

QList<PlaylistWarning> warningsFor(const QList<Playlist> &playlists, const ConversionOptions &options,
                                   Player &player)
{
    QList<PlaylistWarning> warnings;
    PlaylistChecker checker(options, player.rockbox.playlistLimit, player.files ? &*player.files : nullptr);
    for (const Playlist &playlist : playlists)
        warnings += checker.warnings(playlist);
    return warnings;
}

void printWarnings(const QList<PlaylistWarning> &warnings, CliOutput &output)
{
    if (warnings.isEmpty())
        return;
    output.out() << "\nWarnings:\n";
    for (const PlaylistWarning &warning : warnings)
        output.out() << "  " << warning.playlistName << ": " << warningText(warning) << '\n';
    output.out().flush();
}

QJsonArray warningsJson(const QList<PlaylistWarning> &warnings)
{
    QJsonArray array;
    for (const PlaylistWarning &warning : warnings) {
        array.append(QJsonObject{{QStringLiteral("playlistName"), warning.playlistName},
                                 {QStringLiteral("kind"), warningKindName(warning.kind)},
                                 {QStringLiteral("count"), warning.count},
                                 {QStringLiteral("limit"), warning.limit}});
    }
    return array;
}

} // namespace kestrune::cli
