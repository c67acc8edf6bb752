#include "ITunesDBParser.h"

#include "ChunkWalk.h"
#include "HelperThread.h"
#include "MhodPayload.h"
#include "ParseError.h"
#include "TrackItems.h"
#include "TrackResolution.h"

#include <QUuid>

#include <exception>

namespace kestrune {

namespace {

using namespace chunkwalk;

// Any of these in a playlist item marks it smart; 100 and 101 included, as real databases have them.
bool isSmartMarker(quint32 type)
{
    return type == 50 || type == 51 || type == 100 || type == 101;
}

// Below this, a track list is walked by one thread: a second one would not pay for itself.
constexpr qsizetype splitFromBytes = 1 << 20;

// A section of the database: its type, where its first child starts and where it ends.
struct Section {
    quint32 type = 0;
    qsizetype bodyStart = 0;
    qsizetype end = 0;
};

struct Sections {
    QList<Section> tracks;
    QList<Section> playlists;
};

// The track and playlist sections from the cursor on, found by their headers alone. `claimedSize` grows to
// the furthest end a section declares.
Sections findSections(BinaryReader &reader, quint32 sectionCount, ParseBudget &budget, qint64 &claimedSize)
{
    Sections found;
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
        claimedSize = qMax(claimedSize, qint64(section.end));
        if (section.type == 1)
            found.tracks.append(section);
        else if (section.type == 2)
            found.playlists.append(section);
        reader.seek(section.end);
        ++sectionsRead;
        if (*sectionTotalLen == 0)
            break; // the cursor cannot move past this section
    }
    return found;
}

// Where the helper starts in the largest track list, when it is large: an item boundary near the point
// that balances the helper's share with the playlists' reading, which costs about a fifth of a track
// list's per byte. Sets `splitIndex` to that list; noStop when there is none.
qsizetype chooseJunction(BinaryReader &reader, const Sections &sections, qsizetype &splitIndex)
{
    const auto bytesIn = [&reader](const Section &section) {
        return std::max<qsizetype>(0, std::min(section.end, reader.size()) - section.bodyStart);
    };
    splitIndex = -1;
    for (qsizetype i = 0; i < sections.tracks.size(); ++i) {
        if (bytesIn(sections.tracks.at(i)) >= splitFromBytes &&
            (splitIndex < 0 || bytesIn(sections.tracks.at(i)) > bytesIn(sections.tracks.at(splitIndex))))
            splitIndex = i;
    }
    if (splitIndex < 0)
        return noStop;
    qsizetype playlistBytes = 0;
    for (const Section &playlists : sections.playlists)
        playlistBytes += bytesIn(playlists);
    const Section &section = sections.tracks.at(splitIndex);
    const qsizetype trackBytes = bytesIn(section);
    const qsizetype share = std::max<qsizetype>(trackBytes / 8, (trackBytes - playlistBytes / 5) / 2);
    return findItemBoundary(reader, section.bodyStart + trackBytes - share, section.end);
}

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
    result.claimedSize = declaredLength;
    result.fileSize = dataSize;
    reader.seek(headerLen);

    const Sections sections = findSections(reader, sectionCount, budget, result.claimedSize);
    result.looksTruncated = result.claimedSize > dataSize;
    const QList<Section> &trackSections = sections.tracks;
    const QList<Section> &playlistSections = sections.playlists;
    qsizetype splitIndex = -1;
    const qsizetype junction = chooseJunction(helperReader, sections, splitIndex);

    // Without a second thread the helper's part runs here after the tracks, from the one budget.
    std::optional<ParseBudget> ownBudget;
    if (junction != noStop)
        ownBudget = budget.split();
    ParseBudget &helperBudget = ownBudget ? *ownBudget : budget;
    TrackItemWalk helperTracks;
    std::exception_ptr helperTrackError;
    QList<QList<Playlist>> playlistLists;
    bool playlistsComplete = true;
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
            playlistLists.append(parsePlaylistList(helperReader, section.end, helperBudget, playlistsComplete));
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
                const qsizetype listBytes = std::min(section.end, dataSize) - section.bodyStart;
                result.tracks.reserve(result.tracks.size() + walk.tracks.size() * listBytes / walked);
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
    result.playlistsIncomplete = !playlistsComplete;
    resolvePlaylistTracks(result.playlists, result.tracks);

    if (work)
        *work = budget.spent();
    return result;
}

QList<Playlist> ITunesDBParser::parsePlaylistList(BinaryReader &reader, qsizetype sectionEnd,
                                                  ParseBudget &budget, bool &complete) const
{
    QList<Playlist> playlists;
    const std::optional<quint32> count = openList(reader, QLatin1StringView("mhlp"), budget);
    const auto markIncomplete = qScopeGuard([&] {
        if (!count || quint32(playlists.size()) < *count)
            complete = false;
    });
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
