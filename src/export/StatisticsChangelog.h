#pragma once

#include "DeviceFileIndex.h"
#include "DeviceFolder.h"
#include "core/Track.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <optional>

namespace kestrune {

// Carries what the iPod counted (plays, ratings, last plays) over to Rockbox, whose database imports it
// from ".rockbox/database_changelog.txt" ("Import Modifications"). Rockbox keeps its own values for a
// track it has already played or rated.

// What a library holds in statistics.
struct StatisticsSummary {
    qsizetype tracksWithStatistics = 0;
    qint64 totalPlays = 0;
    qsizetype ratedTracks = 0;
    QList<Track> mostPlayed; // up to ten, the most plays first

    bool operator==(const StatisticsSummary &) const = default;
};

[[nodiscard]] bool hasStatistics(const Track &track);
[[nodiscard]] StatisticsSummary summarizeStatistics(const QList<Track> &tracks);

// The changelog for the tracks with statistics, one line each, and what was left out.
struct StatisticsChangelog {
    QByteArray text;
    qsizetype written = 0;
    qsizetype notOnDevice = 0; // no file for the track on the device
    qsizetype tooLong = 0;     // its path alone does not fit the player's line

    bool operator==(const StatisticsChangelog &) const = default;
};

// `tracks` in the database's order. Each line names the track's file exactly as the device spells it,
// because the import matches names case-sensitively, and fits the player's line buffer: informative tags
// go, the longest first, until it does.
[[nodiscard]] StatisticsChangelog buildStatisticsChangelog(const QList<Track> &tracks,
                                                           DeviceFileIndex &files);

// Where the changelog goes, below the device's root.
inline constexpr QLatin1StringView changelogFileName("database_changelog.txt");

// Writes the changelog into the device's Rockbox folder through the same durable path as playlists.
// Refuses, with the reason, when the device has no Rockbox folder or, unless `replace`, already holds a
// changelog (Rockbox writes one itself on "Export Modifications"). Gives the reason of a failure.
[[nodiscard]] std::optional<QString> writeStatisticsChangelog(const QString &deviceRoot,
                                                              const QByteArray &text, bool replace);
// The same below a root the caller holds locked (DeviceLock): the Rockbox folder is reached from it
// without following a link, and temporary files a dead run left there go first.
[[nodiscard]] std::optional<QString> writeStatisticsChangelog(const DeviceFolder &deviceRoot,
                                                              const QByteArray &text, bool replace);

// Where the changelog goes on the device, in its Rockbox folder however the device spells that
// (".rockbox", ".Rockbox"); none when the device has no Rockbox folder.
[[nodiscard]] std::optional<QString> changelogPath(const QString &deviceRoot);

} // namespace kestrune
