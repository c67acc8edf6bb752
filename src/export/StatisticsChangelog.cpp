#include "StatisticsChangelog.h"

#include "PlaylistWriteBatch.h"

#include <QFileInfo>

#include <algorithm>

namespace kestrune {

namespace {

// The player reads the file a line at a time into 2,048 bytes, its terminating NUL included.
constexpr qsizetype longestLine = 2047;
constexpr qsizetype mostPlayedShown = 10;

QByteArray escaped(const QString &value)
{
    QByteArray out;
    const QByteArray utf8 = value.toUtf8();
    out.reserve(utf8.size());
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        const char c = utf8.at(i);
        if (c == '"' || c == '\\')
            out.append('\\').append(c);
        else if (c == '\n' || (c == '\r' && (i + 1 == utf8.size() || utf8.at(i + 1) != '\n')))
            out.append("\\n");
        else if (c != '\r')
            out.append(c);
    }
    return out;
}

QByteArray tag(const char *name, const QByteArray &value)
{
    return QByteArray(name) + "=\"" + value + "\" ";
}

QByteArray numberTag(const char *name, qint64 value)
{
    return tag(name, QByteArray::number(value));
}

// A line's tags in the order the player writes them; the informative ones may be dropped.
struct LineTags {
    QList<std::pair<QByteArray, bool>> tags; // tag text, informative

    void add(const char *name, const QString &value)
    {
        if (!value.trimmed().isEmpty())
            tags.append({tag(name, escaped(value)), true});
    }
    void add(const char *name, quint32 value)
    {
        if (value > 0)
            tags.append({numberTag(name, value), true});
    }

    [[nodiscard]] qsizetype length() const
    {
        qsizetype total = 0;
        for (const auto &[text, informative] : tags)
            total += text.size();
        return total;
    }

    // Drops informative tags, the longest first, until the line fits; false when even the rest is too long.
    bool fit()
    {
        while (length() - 1 > longestLine) { // less the space after the last tag
            auto longest = tags.end();
            for (auto it = tags.begin(); it != tags.end(); ++it) {
                if (it->second && (longest == tags.end() || it->first.size() > longest->first.size()))
                    longest = it;
            }
            if (longest == tags.end())
                return false;
            tags.erase(longest);
        }
        return true;
    }

    [[nodiscard]] QByteArray joined() const
    {
        QByteArray line;
        for (const auto &[text, informative] : tags)
            line += text;
        line.chop(1); // the space after the last tag
        return line;
    }
};

// Every tag of a track's line, informative ones first dropped as needed; `lastPlayed` is its place in the
// order of last plays.
LineTags lineFor(const Track &track, const QString &storedPath, qint64 lastPlayed)
{
    LineTags line;
    line.add("artist", track.artist());
    line.add("album", track.album());
    line.add("genre", track.genre());
    line.add("title", track.title());
    line.tags.append({tag("filename", escaped(storedPath)), false});
    line.add("composer", track.composer());
    line.add("year", track.year());
    line.add("tracknumber", track.trackNumber());
    line.add("bitrate", track.bitrate());
    line.add("length", track.totalTimeMs());
    for (const auto &[name, value] : {std::pair{"playcount", qint64(track.playCount())},
                                      std::pair{"rating", qint64(qMin(track.rating() / 10, 10))},
                                      std::pair{"playtime", qint64(track.playCount()) * track.totalTimeMs()},
                                      std::pair{"lastplayed", lastPlayed}})
        line.tags.append({numberTag(name, value), false});
    return line;
}

} // namespace

bool hasStatistics(const Track &track)
{
    return track.playCount() > 0 || track.rating() > 0 || track.lastPlayed() > 0;
}

StatisticsSummary summarizeStatistics(const QList<Track> &tracks)
{
    StatisticsSummary summary;
    for (const Track &track : tracks) {
        summary.tracksWithStatistics += hasStatistics(track) ? 1 : 0;
        summary.totalPlays += track.playCount();
        summary.ratedTracks += track.rating() > 0 ? 1 : 0;
        if (track.playCount() > 0)
            summary.mostPlayed.append(track);
    }
    std::stable_sort(summary.mostPlayed.begin(), summary.mostPlayed.end(),
                     [](const Track &a, const Track &b) { return a.playCount() > b.playCount(); });
    summary.mostPlayed.resize(qMin(summary.mostPlayed.size(), mostPlayedShown));
    return summary;
}

StatisticsChangelog buildStatisticsChangelog(const QList<Track> &tracks, DeviceFileIndex &files)
{
    StatisticsChangelog changelog;
    QList<std::pair<const Track *, QString>> kept; // with the file's name as the device spells it
    for (const Track &track : tracks) {
        if (!hasStatistics(track))
            continue;
        const std::optional<QString> stored = files.storedPath(track.rockboxPath());
        if (!stored)
            ++changelog.notOnDevice;
        else if (!lineFor(track, *stored, tracks.size()).fit()) // the widest counter it could get
            ++changelog.tooLong;
        else
            kept.append({&track, *stored});
    }

    // Rockbox's "last played" is a counter, not a date: the track played longest ago gets 1.
    QList<qsizetype> byLastPlay;
    for (qsizetype i = 0; i < kept.size(); ++i) {
        if (kept.at(i).first->lastPlayed() > 0)
            byLastPlay.append(i);
    }
    std::stable_sort(byLastPlay.begin(), byLastPlay.end(), [&kept](qsizetype a, qsizetype b) {
        return kept.at(a).first->lastPlayed() < kept.at(b).first->lastPlayed();
    });
    QList<qint64> counter(kept.size(), 0);
    for (qsizetype rank = 0; rank < byLastPlay.size(); ++rank)
        counter[byLastPlay.at(rank)] = rank + 1;

    changelog.text = "## Changelog version 1\n";
    for (qsizetype i = 0; i < kept.size(); ++i) {
        LineTags line = lineFor(*kept.at(i).first, kept.at(i).second, counter.at(i));
        line.fit();
        changelog.text += line.joined() + '\n';
    }
    changelog.written = kept.size();
    return changelog;
}

std::optional<QString> changelogPath(const QString &deviceRoot)
{
    DeviceFileIndex files(deviceRoot);
    const std::optional<QString> folder = files.storedPath(QStringLiteral(".rockbox"));
    if (!folder || !QFileInfo(deviceRoot + *folder).isDir())
        return std::nullopt;
    return deviceRoot + *folder + u'/' + changelogFileName;
}

std::optional<QString> writeStatisticsChangelog(const QString &deviceRoot, const QByteArray &text,
                                                bool replace)
{
    return writeStatisticsChangelog(DeviceFolder::open(deviceRoot), text, replace);
}

std::optional<QString> writeStatisticsChangelog(const DeviceFolder &deviceRoot, const QByteArray &text, bool replace)
{
    if (!deviceRoot.isOpen())
        return deviceRoot.error();
    const std::optional<QString> path = changelogPath(deviceRoot.path());
    if (!path)
        return QStringLiteral("the device has no .rockbox folder: install Rockbox on it first");
    // The folder as the device spells it, reached from the root without following a link.
    const DeviceFolder rockbox =
        deviceRoot.openFolder(QFileInfo(*path).absolutePath().mid(deviceRoot.path().size() + 1), false);
    if (!rockbox.isOpen())
        return rockbox.error();
    if (!replace && rockbox.entryKind(changelogFileName) != DeviceFolder::EntryKind::missing)
        return QStringLiteral("%1 already exists (Rockbox writes it on \"Export Modifications\")").arg(*path);
    PlaylistWriteBatch::sweepStaleTemporaryFiles(rockbox);
    PlaylistWriteBatch batch(rockbox);
    const PlaylistWriteBatch::Staged staged = batch.stage(changelogFileName, text);
    if (staged.error)
        return staged.error;
    return batch.commit().value(staged.handle);
}

} // namespace kestrune
