// Copying the iPod's play counts and ratings to Rockbox: read and summarised first, written once the user
// confirms.
#include "AppViewModel.h"

#include "BackgroundTask.h"
#include "export/DeviceLock.h"
#include "core/FileSystemError.h"
#include "core/ParseError.h"
#include "core/PlayCounts.h"
#include "export/StatisticsChangelog.h"

#include <QFileInfo>

namespace kestrune {

struct AppViewModel::StatisticsDraft {
    QString deviceRoot;
    QByteArray changelog;
    QVariantMap shown;
};

namespace {

QVariantMap stateOnly(const QString &state)
{
    return QVariantMap{{QStringLiteral("state"), state}};
}

} // namespace

void AppViewModel::prepareStatisticsCopy()
{
    const std::optional<IPodDevice> device = m_detector->selectedDevice();
    if (!device || m_isLoading || m_statisticsCopy.value(QStringLiteral("state")).isValid())
        return;
    setStatisticsCopy(stateOnly(QStringLiteral("reading")));
    // The database is read again rather than taken from the lists: the play counts live in the file, and
    // the device may have been synced since it was shown.
    runInBackground(
        this,
        [parser = m_parser, database = device->itunesDBURL, root = device->mountURL.toLocalFile()] {
            StatisticsDraft draft{.deviceRoot = root};
            LibraryStatistics statistics;
            try {
                statistics = libraryStatistics(parser.parse(database),
                                               QFileInfo(database.toLocalFile()).absolutePath());
            } catch (const ParseError &) {
                draft.shown = stateOnly(QStringLiteral("unreadable"));
                return draft;
            } catch (const FileSystemError &) {
                draft.shown = stateOnly(QStringLiteral("unreadable"));
                return draft;
            }
            const StatisticsSummary summary = summarizeStatistics(statistics.tracks);
            const std::optional<QString> target = changelogPath(root);
            const QString state = !target                             ? QStringLiteral("noRockbox")
                                  : summary.tracksWithStatistics == 0 ? QStringLiteral("nothing")
                                                                      : QStringLiteral("ready");
            if (state != QStringLiteral("ready")) { // nothing to copy: the device's files need no walk
                draft.shown = stateOnly(state);
                return draft;
            }
            DeviceFileIndex files(root);
            const StatisticsChangelog changelog = buildStatisticsChangelog(statistics.tracks, files);
            draft.changelog = changelog.text;
            draft.shown = {{QStringLiteral("state"), state},
                           {QStringLiteral("tracks"), summary.tracksWithStatistics},
                           {QStringLiteral("plays"), summary.totalPlays},
                           {QStringLiteral("rated"), summary.ratedTracks},
                           {QStringLiteral("written"), changelog.written},
                           {QStringLiteral("leftOut"), changelog.notOnDevice + changelog.tooLong},
                           {QStringLiteral("replaces"), target && QFileInfo::exists(*target)}};
            return draft;
        },
        [this](StatisticsDraft draft) {
            if (m_statisticsCopy.value(QStringLiteral("state")) != QStringLiteral("reading"))
                return; // cancelled meanwhile
            const bool ready = draft.shown.value(QStringLiteral("state")) == QStringLiteral("ready");
            setStatisticsCopy(draft.shown);
            if (ready) // only what can be copied is kept for the confirmation
                m_statisticsDraft = std::make_shared<StatisticsDraft>(std::move(draft));
        });
}

void AppViewModel::confirmStatisticsCopy()
{
    // Taken, so that a second confirmation writes nothing more.
    const std::shared_ptr<StatisticsDraft> draft = std::exchange(m_statisticsDraft, nullptr);
    if (!draft)
        return;
    QVariantMap shown = m_statisticsCopy;
    shown.insert(QStringLiteral("state"), QStringLiteral("writing"));
    setStatisticsCopy(shown);
    runInBackground(
        this,
        [draft] {
            // One writer per device: tried, never waited for. The user was told a changelog already
            // there is replaced.
            std::variant<DeviceLock, QString> lock =
                DeviceLock::acquire(DeviceFolder::open(draft->deviceRoot), std::chrono::milliseconds(0));
            if (const QString *busy = std::get_if<QString>(&lock))
                return std::optional<QString>(*busy);
            return writeStatisticsChangelog(std::get<DeviceLock>(lock).folder(), draft->changelog, true);
        },
        [this](std::optional<QString> failure) {
            if (m_statisticsCopy.value(QStringLiteral("state")) != QStringLiteral("writing"))
                return;
            QVariantMap outcome = m_statisticsCopy;
            outcome.insert(QStringLiteral("state"),
                           failure ? QStringLiteral("failed") : QStringLiteral("done"));
            outcome.insert(QStringLiteral("reason"), failure.value_or(QString()));
            setStatisticsCopy(outcome);
        });
}

void AppViewModel::closeStatisticsCopy()
{
    // A write under way still finishes; closing only stops it from being shown.
    m_statisticsDraft.reset();
    setStatisticsCopy({});
}

void AppViewModel::setStatisticsCopy(QVariantMap shown)
{
    m_statisticsCopy = std::move(shown);
    Q_EMIT statisticsCopyChanged();
}

} // namespace kestrune
