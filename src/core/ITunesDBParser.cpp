#include "ITunesDBParser.h"

#include "ChunkWalk.h"
#include "MhodPayload.h"
#include "ParseError.h"
#include "Prefetch.h"
#include "TrackItems.h"

#include <QUuid>

#include <exception>
#include <functional>
#include <system_error>
#include <thread>
#include <vector>

namespace kestrune {

namespace {

using namespace chunkwalk;

// Any of these in a playlist item marks it smart; 100 and 101 included, as real databases have them.
bool isSmartMarker(quint32 type)
{
    return type == 50 || type == 51 || type == 100 || type == 101;
}

// Finds tracks by id: through a plain array when the ids are dense, as iTunes numbers them from a small base,
// else through the table itself.
class TrackLookup {
public:
    explicit TrackLookup(const QHash<quint32, Track> &tracks) : m_tracks(tracks)
    {
        if (tracks.isEmpty())
            return;
        auto [lowest, highest] = std::pair{std::numeric_limits<quint32>::max(), quint32(0)};
        for (auto at = tracks.keyBegin(); at != tracks.keyEnd(); ++at) {
            lowest = std::min(lowest, *at);
            highest = std::max(highest, *at);
        }
        if (qint64(highest) - lowest > 4 * qint64(tracks.size()) + 4096)
            return;
        m_lowest = lowest;
        m_byId.assign(size_t(highest - lowest) + 1, nullptr);
        for (auto at = tracks.cbegin(); at != tracks.cend(); ++at)
            m_byId[at.key() - lowest] = &at.value();
    }

    [[nodiscard]] const Track *find(quint32 id) const
    {
        if (!m_byId.empty()) {
            const quint64 index = quint64(id) - m_lowest;
            return id >= m_lowest && index < m_byId.size() ? m_byId[index] : nullptr;
        }
        const auto at = m_tracks.constFind(id);
        return at == m_tracks.constEnd() ? nullptr : &*at;
    }

private:
    const QHash<quint32, Track> &m_tracks;
    quint32 m_lowest = 0;
    std::vector<const Track *> m_byId;
};

// Resolves the entries of playlists [first, last).
void resolveTracks(Playlist *playlists, qsizetype first, qsizetype last, const TrackLookup &tracks)
{
    // Random tracks of a large table are cache misses. Looking them all up first lets those lookups
    // overlap, and fetching a few tracks ahead hides most of the wait while copying.
    constexpr qsizetype lookahead = 8;
    std::vector<const Track *> found;
    for (qsizetype index = first; index < last; ++index) {
        Playlist &playlist = playlists[index];
        found.clear();
        found.reserve(size_t(playlist.trackIds.size()));
        for (quint32 trackId : std::as_const(playlist.trackIds)) {
            if (const Track *track = tracks.find(trackId))
                found.push_back(track);
        }
        playlist.tracks.reserve(qsizetype(found.size()));
        for (size_t i = 0; i < found.size(); ++i) {
            if (i + lookahead < found.size())
                prefetchTrack(*found[i + lookahead]);
            playlist.tracks.append(*found[i]);
        }
    }
}

// Below this, a track list is walked by one thread: a second one would not pay for itself.
constexpr qsizetype splitFromBytes = 1 << 20;

// A section of the database: its type, where its first child starts and where it ends.
struct Section {
    quint32 type = 0;
    qsizetype bodyStart = 0;
    qsizetype end = 0;
};

// Runs `work` on a thread of its own, or right here when asked not to; `wait` returns when it is done and
// passes on what it threw. A thread of its own rather than one of a pool, whose threads may all be waiting.
class HelperThread {
public:
    HelperThread(bool ownThread, std::function<void()> work) : m_work(std::move(work))
    {
        if (!ownThread)
            return;
        try {
            m_thread = std::thread([this] { run(); });
        } catch (const std::system_error &) {
            // No thread to be had: the work runs here when waited for, as for a small file.
        }
    }
    ~HelperThread()
    {
        if (m_thread.joinable())
            m_thread.join();
    }
    HelperThread(const HelperThread &) = delete;
    HelperThread &operator=(const HelperThread &) = delete;

    void wait()
    {
        if (m_thread.joinable())
            m_thread.join();
        else if (m_work)
            run();
        m_work = nullptr;
        if (m_error)
            std::rethrow_exception(std::exchange(m_error, nullptr));
    }

private:
    void run()
    {
        try {
            m_work();
        } catch (...) {
            m_error = std::current_exception();
        }
    }

    std::function<void()> m_work;
    std::exception_ptr m_error;
    std::thread m_thread;
};

} // namespace

ParseResult ITunesDBParser::parse(const QUrl &fileURL, const ReadProgress &progress) const
{
    DatabaseFile file(fileURL.toLocalFile(), progress);
    DatabaseFile sibling(file);
    BinaryReader reader(file);
    BinaryReader helperReader(sibling);
    ParseResult result = parse(reader, helperReader, nullptr);
    file.finish();
    return result;
}

ParseResult ITunesDBParser::parse(const QByteArray &data, ParseWork *work) const
{
    BinaryReader reader(data);
    BinaryReader helperReader(data);
    return parse(reader, helperReader, work);
}

// The sections are found first. The largest track list is then read by two threads, each with a reader of
// its own: this one from the list's start, the helper from an item boundary further on, after which the
// helper reads the playlists. The helper's tracks count only when this walk lands exactly on its first
// item; else this walk goes on alone, so the result is always that of one walk from the start.
ParseResult ITunesDBParser::parse(BinaryReader &reader, BinaryReader &helperReader, ParseWork *work) const
{
    const qsizetype dataSize = reader.size();
    if (dataSize < 32)
        throw ParseError::fileTooSmall();

    if (!readTag(reader, QLatin1StringView("mhbd")))
        throw ParseError::invalidHeader();

    // The size check above leaves every word of the header readable.
    const quint32 headerLen = *reader.readUInt32LE();
    const quint32 declaredLength = *reader.readUInt32LE(); // the whole file's, when intact
    reader.skip(8);
    const quint32 sectionCount = *reader.readUInt32LE();

    ParseBudget budget(dataSize);
    ParseResult result;
    result.looksTruncated = qint64(declaredLength) > dataSize;
    reader.seek(headerLen);

    QList<Section> trackSections;
    QList<Section> playlistSections;
    quint32 sectionsRead = 0;
    while (reader.remainingBytes() >= 12 && sectionsRead < sectionCount && budget.spendIteration()) {
        const qsizetype chunkStart = reader.offset();
        const BinaryReader::TagMatch tag = reader.readFourCC(QLatin1StringView("mhsd"));
        if (tag == BinaryReader::TagMatch::unreadable)
            break;
        if (tag == BinaryReader::TagMatch::differs) {
            reader.seek(chunkStart + 4);
            continue;
        }
        const std::optional<quint32> sectionHeaderLen = reader.readUInt32LE();
        const std::optional<quint32> sectionTotalLen = reader.readUInt32LE();
        const std::optional<quint32> sectionType = reader.readUInt32LE();
        if (!sectionHeaderLen || !sectionTotalLen || !sectionType || !budget.spendChunk())
            break;
        const Section section{*sectionType, chunkStart + *sectionHeaderLen, chunkStart + *sectionTotalLen};
        result.looksTruncated = result.looksTruncated || section.end > dataSize;
        if (section.type == 1)
            trackSections.append(section);
        else if (section.type == 2)
            playlistSections.append(section);
        reader.seek(section.end);
        ++sectionsRead;
        if (*sectionTotalLen == 0)
            break; // the cursor cannot move past this section
    }

    // The list to share: the largest, when it is large. The helper's share is what balances the playlists'
    // reading, which costs about a fifth of a track list's per byte.
    const auto bytesIn = [dataSize](const Section &section) {
        return std::max<qsizetype>(0, std::min(section.end, dataSize) - section.bodyStart);
    };
    qsizetype splitIndex = -1;
    qsizetype junction = noStop;
    for (qsizetype i = 0; i < trackSections.size(); ++i) {
        if (bytesIn(trackSections.at(i)) >= splitFromBytes &&
            (splitIndex < 0 || bytesIn(trackSections.at(i)) > bytesIn(trackSections.at(splitIndex))))
            splitIndex = i;
    }
    if (splitIndex >= 0) {
        qsizetype playlistBytes = 0;
        for (const Section &playlists : std::as_const(playlistSections))
            playlistBytes += bytesIn(playlists);
        const Section &section = trackSections.at(splitIndex);
        const qsizetype trackBytes = bytesIn(section);
        const qsizetype share = std::max<qsizetype>(trackBytes / 8, (trackBytes - playlistBytes / 5) / 2);
        junction = findItemBoundary(helperReader, section.bodyStart + trackBytes - share, section.end);
    }

    // Without a second thread the helper's part runs here after the tracks, from the one budget.
    std::optional<ParseBudget> ownBudget;
    if (junction != noStop)
        ownBudget = budget.split();
    ParseBudget &helperBudget = ownBudget ? *ownBudget : budget;
    TrackItemWalk helperTracks;
    std::exception_ptr helperTrackError;
    QList<QList<Playlist>> playlistLists;
    HelperThread helper(junction != noStop, [&] {
        if (junction != noStop) {
            try { // an error there counts only if this walk would have read there too
                helperReader.seek(junction);
                walkTrackItems(helperReader, trackSections.at(splitIndex).end, std::numeric_limits<quint32>::max(),
                               noStop, helperBudget, helperTracks, true);
            } catch (...) {
                helperTrackError = std::current_exception();
            }
        }
        for (const Section &section : std::as_const(playlistSections)) {
            helperReader.seek(section.bodyStart);
            playlistLists.append(parsePlaylistList(helperReader, section.end, helperBudget));
            helperReader.release(section.bodyStart, section.end);
        }
    });

    const auto keep = [&result](QList<Track> &tracks) {
        result.tracks.reserve(result.tracks.size() + tracks.size());
        result.trackItemIds.reserve(result.trackItemIds.size() + tracks.size());
        result.trackOrder.reserve(result.trackOrder.size() + tracks.size());
        for (Track &track : tracks) {
            const qsizetype known = result.tracks.size();
            const quint32 id = track.id();
            result.trackItemIds.append(id);
            result.tracks.emplace(id, std::move(track)); // a later record with the same id wins
            if (result.tracks.size() != known)
                result.trackOrder.append(id);
        }
        tracks = {};
    };
    for (qsizetype i = 0; i < trackSections.size(); ++i) {
        const Section &section = trackSections.at(i);
        reader.seek(section.bodyStart);
        TrackItemWalk walk;
        if (const std::optional<quint32> count = openList(reader, QLatin1StringView("mhlt"), budget)) {
            // Every item needs at least 20 bytes, whatever the count claims.
            walk.tracks.reserve(std::min<qsizetype>(*count, reader.remainingBytes() / 20));
            walkTrackItems(reader, section.end, *count, i == splitIndex ? junction : noStop, budget, walk);
            if (walk.reachedStop) {
                const quint32 stepsLeft = *count - walk.steps;
                // Room for the whole list, as its part read so far suggests, so that the table grows once.
                const qint64 walked = std::max<qint64>(1, junction - section.bodyStart);
                result.tracks.reserve(result.tracks.size() + walk.tracks.size() * bytesIn(section) / walked);
                keep(walk.tracks); // while the helper may still be reading
                helper.wait();     // its playlists are read too by now
                if (helperTrackError || (helperBudget.spent().capped && helperTracks.steps < stepsLeft)) {
                    walkTrackItems(reader, section.end, *count, noStop, budget, walk); // on alone
                } else {
                    qsizetype taken = 0;
                    while (taken < helperTracks.tracks.size() && helperTracks.stepOfTrack.at(taken) < stepsLeft)
                        ++taken;
                    helperTracks.tracks.resize(taken);
                    walk.tracks = std::move(helperTracks.tracks);
                }
            }
        }
        keep(walk.tracks);
        reader.release(section.bodyStart, section.end); // what was read from it is decoded by now
    }
    helper.wait();
    if (ownBudget)
        budget.absorb(*ownBudget);
    for (QList<Playlist> &playlists : playlistLists)
        result.playlists.append(std::move(playlists));

    // Resolving is split too, in two halves of about as many entries each.
    Playlist *playlists = result.playlists.data();
    const qsizetype playlistCount = result.playlists.size();
    qint64 entries = 0;
    for (qsizetype i = 0; i < playlistCount; ++i)
        entries += playlists[i].trackIds.size();
    qsizetype half = 0;
    for (qint64 counted = 0; half < playlistCount && counted * 2 < entries; ++half)
        counted += playlists[half].trackIds.size();
    const TrackLookup lookup(result.tracks);
    HelperThread resolver(entries >= 10000, [&] { resolveTracks(playlists, half, playlistCount, lookup); });
    resolveTracks(playlists, 0, half, lookup);
    resolver.wait();

    if (work)
        *work = budget.spent();
    return result;
}

QList<Playlist> ITunesDBParser::parsePlaylistList(BinaryReader &reader, qsizetype sectionEnd,
                                                  ParseBudget &budget) const
{
    QList<Playlist> playlists;
    const std::optional<quint32> count = openList(reader, QLatin1StringView("mhlp"), budget);
    for (quint32 index = 0; count && index < *count && budget.spendIteration(); ++index) {
        ItemHead item;
        const ItemStep step = nextItem(reader, QLatin1StringView("mhyp"), sectionEnd, 24, budget, item);
        if (step == ItemStep::stop)
            break;
        if (step == ItemStep::skipped)
            continue;
        reader.releaseBefore(item.start);

        Playlist playlist;
        if (item.headerLen >= 24)
            playlist.isMaster = reader.readUInt32LE() == 1u;
        if (item.headerLen >= 36) {
            reader.seek(item.start + 28);
            playlist.dbId = reader.readUInt64LE().value_or(0);
        }
        if (item.headerLen >= 0x38) { // iTunes 7 and later: playlist folders
            reader.seek(item.start + 0x2A);
            playlist.isFolder = (reader.readUInt16LE().value_or(0) & 0x0100) != 0;
            reader.seek(item.start + 0x30);
            playlist.parentDbId = reader.readUInt64LE().value_or(0);
        }
        reader.seek(item.start + item.headerLen);
        walkDataObjects(reader, item.end(), item.word12, budget,
                        [&](quint32 type, qsizetype start, quint32 headerLen, quint32 totalLen) {
                            if (isSmartMarker(type))
                                playlist.isSmart = true;
                            else if (type == mhodTitle)
                                playlist.name = readMhodString(reader, start, headerLen, totalLen, budget);
                        });
        playlist.trackIds = readEntries(reader, item.word16, budget);

        if (playlist.name.isEmpty()) {
            playlist.name = playlist.isMaster
                                ? QStringLiteral("iPod Library")
                                : QStringLiteral("Playlist ") + QString::number(playlists.size() + 1);
        }
        playlist.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
        playlists.append(std::move(playlist));
        reader.seek(item.end());
        if (item.totalLen == 0)
            break;
    }
    return playlists;
}

} // namespace kestrune
