#include "RockboxPlayer.h"

#include <QFile>

namespace kestrune {

namespace {

// A value of a "name: value" settings file, the name matched case-blind; reads at most the first 64 KB,
// which any real file fits in many times.
std::optional<QString> settingValue(const QString &path, QLatin1StringView name)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return std::nullopt;
    const QList<QByteArray> lines = file.read(64 * 1024).split('\n');
    for (const QByteArray &line : lines) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && QString::fromUtf8(line.left(colon)).trimmed().compare(name, Qt::CaseInsensitive) == 0)
            return QString::fromUtf8(line.mid(colon + 1)).trimmed();
    }
    return std::nullopt;
}

} // namespace

std::optional<int> defaultPlaylistLimit(const QString &target)
{
    static const QLatin1StringView portalPlayer[] = {
        QLatin1StringView("ipod1g2g"),   QLatin1StringView("ipod3g"),     QLatin1StringView("ipod4g"),
        QLatin1StringView("ipodcolor"),  QLatin1StringView("ipodmini1g"), QLatin1StringView("ipodmini2g"),
        QLatin1StringView("ipodnano1g"), QLatin1StringView("ipodvideo")};
    if (target == QLatin1StringView("ipodnano2g") || target == QLatin1StringView("ipod6g"))
        return 10000;
    for (QLatin1StringView name : portalPlayer) {
        if (target == name)
            return 2000;
    }
    return std::nullopt;
}

RockboxPlayer readRockboxPlayer(const QString &deviceRoot)
{
    RockboxPlayer player;
    const QString folder = deviceRoot + QStringLiteral("/.rockbox/");
    if (std::optional<QString> target = settingValue(folder + QStringLiteral("rockbox-info.txt"),
                                                     QLatin1StringView("Target"));
        target && !target->isEmpty()) {
        player.target = target->toLower();
        if (const std::optional<int> limit = defaultPlaylistLimit(*player.target)) {
            player.playlistLimit = *limit;
            player.limitSource = RockboxPlayer::LimitSource::targetDefault;
        }
    }
    // A value that is no number reads as 0, outside the range.
    const int userLimit =
        settingValue(folder + QStringLiteral("config.cfg"), QLatin1StringView("max files in playlist"))
            .value_or(QString())
            .toInt();
    if (userLimit >= 1000 && userLimit <= 32000) { // the setting's range on the player
        player.playlistLimit = userLimit;
        player.limitSource = RockboxPlayer::LimitSource::userSetting;
    }
    return player;
}

} // namespace kestrune
