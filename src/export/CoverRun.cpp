#include "CoverRun.h"

#include "CoverNames.h"
#include "CoverWriting.h"
#include "DeviceRecord.h"
#include "Parallel.h"
#include "PlaylistWriteBatch.h"
#include "RockboxGenerator.h"

#include <QHash>
#include <QSet>

#include <variant>

namespace kestrune {

QString CoverResult::status() const
{
    switch (outcome) {
    case Outcome::written:
        return QStringLiteral("written");
    case Outcome::unchanged:
        return QStringLiteral("unchanged");
    case Outcome::removed:
        return QStringLiteral("removed");
    case Outcome::kept:
        return QStringLiteral("kept");
    case Outcome::failed:
        break;
    }
    return QStringLiteral("failed");
}

qsizetype CoverRunReport::count(CoverResult::Outcome outcome) const
{
    return std::count_if(results.cbegin(), results.cend(), [&](const CoverResult &r) { return r.outcome == outcome; });
}

namespace {

const QString recordFolder = QStringLiteral(".rockbox/albumart/");
// A cover is a few tens of kilobytes; a file far larger is no cover of Kestrune's.
constexpr qint64 largestCover = 16 * 1024 * 1024;

// The tracks that share one cover file, in database order.
struct CoverGroup {
    QString name;
    QList<const ArtworkImage *> images; // one per track
};

// One file the run looks at: a group's generic cover, or its variant at the requested size.
struct PlannedFile {
    qsizetype group = 0;
    std::optional<QSize> box; // the variant's, none for the generic file
    const ArtworkImage *image = nullptr;
    QByteArray pixels; // the hash of the source pixels, in hex
    CoverResult result;
    bool needsWrite = false;
    QByteArray digest; // of the bytes written
};

QByteArray hexOf(quint64 value)
{
    return QByteArray::number(value, 16).rightJustified(16, '0');
}

// Whether the file is still the one the record names: its size and time as recorded, else its bytes.
bool stillAsRecorded(const DeviceFolder &folder, const QString &fileName, const RecordEntry &entry)
{
    if (entry.stamp.size >= 0 && folder.stampOf(fileName) == entry.stamp)
        return true;
    const std::optional<QByteArray> bytes = folder.readFile(fileName, largestCover);
    return bytes && RockboxGenerator::contentDigest(*bytes) == entry.sha256;
}

class CoverRun {
public:
    CoverRun(const DeviceFolder &deviceRoot, const ArtworkLibrary &artwork, const CoverRunRequest &request,
             const CoverProgress &progress, const std::atomic<bool> *stop)
        : m_root(deviceRoot), m_artwork(artwork), m_request(request), m_progress(progress), m_stop(stop)
    {
    }

    CoverRunReport run()
    {
        const DeviceFolder rockbox = rockboxFolderOf(m_root);
        if (!rockbox.isOpen() && !rockboxEntryName(m_root)) {
            m_report.notApplicable = QStringLiteral("The device has no .rockbox folder: Rockbox is not installed, so it would find no covers.");
            return m_report;
        }
        if (!rockbox.isOpen()) { // a link, say: refused, never followed
            m_report.failure = rockbox.error().value_or(QString());
            return m_report;
        }
        switch (m_artwork.state()) {
        case ArtworkLibrary::State::ready:
            break;
        case ArtworkLibrary::State::damaged:
            m_report.failure = m_artwork.explanation();
            return m_report;
        case ArtworkLibrary::State::noDatabase:
        case ArtworkLibrary::State::noCoverFormats:
            m_report.notApplicable = m_artwork.explanation();
            return m_report;
        }
        m_folder = rockbox.openFolder(QStringLiteral("albumart"), !m_request.dryRun);
        const bool notMadeYet = m_request.dryRun && rockbox.entryKind(QStringLiteral("albumart")) == DeviceFolder::EntryKind::missing;
        if (!m_folder.isOpen() && !notMadeYet) {
            m_report.failure = m_folder.error().value_or(QStringLiteral("The folder .rockbox/albumart cannot be opened."));
            return m_report;
        }
        m_record = readDeviceRecord(m_root).value_or(DeviceRecord{});
        if (!m_request.dryRun)
            PlaylistWriteBatch::sweepStaleTemporaryFiles(m_folder);
        groupTracks();
        hashImages();
        planFiles();
        writeFiles();
        if (m_request.mirror && !m_report.stopped)
            mirror();
        if (!m_request.dryRun)
            updateRecord();
        return m_report;
    }

private:
    void groupTracks()
    {
        QHash<QString, qsizetype> byKey;
        for (const Track &track : m_request.tracks) {
            const ArtworkImage *image = m_artwork.database().imageFor(track.dbId(), track.artworkId());
            if (!image)
                continue;
            const CoverNaming naming = coverNameFor(track);
            switch (naming.skip) {
            case CoverNaming::Skip::noAlbumOrArtist:
                ++m_report.skippedNoAlbumOrArtist;
                continue;
            case CoverNaming::Skip::tooLong:
                ++m_report.skippedTooLong;
                continue;
            case CoverNaming::Skip::refusedCharacter:
                ++m_report.skippedRefusedCharacter;
                continue;
            case CoverNaming::Skip::none:
                break;
            }
            const QString key = coverNameKey(naming.name);
            if (!byKey.contains(key)) {
                byKey.insert(key, m_groups.size());
                m_groups.append(CoverGroup{naming.name, {}});
            }
            m_groups[byKey.value(key)].images.append(image);
        }
    }

    // Every image a group uses, hashed once, on all cores: what picks each group's picture and tells
    // whether a cover's source changed.
    void hashImages()
    {
        QList<const ArtworkImage *> distinct;
        for (const CoverGroup &group : std::as_const(m_groups)) {
            for (const ArtworkImage *image : group.images) {
                if (!m_imageIndex.contains(image)) {
                    m_imageIndex.insert(image, distinct.size());
                    distinct.append(image);
                }
            }
        }
        m_hashes.resize(distinct.size());
        forEachInParallel(distinct.size(), [&](qsizetype i) {
            const std::variant<ArtworkLibrary::Frame, QString> frame = m_artwork.frameOf(*distinct.at(i));
            if (const auto *found = std::get_if<ArtworkLibrary::Frame>(&frame))
                m_hashes[i] = *pictureHash(found->bytes, found->format, found->area);
            else
                m_hashes[i] = std::get<QString>(frame);
        });
    }

    // The image most of the group's tracks carry (by their pixels), ties going to the first track.
    std::variant<const ArtworkImage *, QString> chosenImage(const CoverGroup &group) const
    {
        QHash<quint64, qsizetype> votes;
        const ArtworkImage *best = nullptr;
        qsizetype bestVotes = 0;
        QString problem;
        for (const ArtworkImage *image : group.images) {
            const auto &hash = m_hashes.at(m_imageIndex.value(image));
            if (const QString *failure = std::get_if<QString>(&hash)) {
                problem = *failure;
                continue;
            }
            const qsizetype count = ++votes[std::get<quint64>(hash)];
            if (count > bestVotes) {
                best = image;
                bestVotes = count;
            }
        }
        if (!best)
            return problem;
        // The first track whose picture has the most votes.
        for (const ArtworkImage *image : group.images) {
            const auto &hash = m_hashes.at(m_imageIndex.value(image));
            if (std::holds_alternative<quint64>(hash) && votes.value(std::get<quint64>(hash)) == bestVotes)
                return image;
        }
        return best;
    }

    void planFiles()
    {
        for (qsizetype g = 0; g < m_groups.size(); ++g) {
            const CoverGroup &group = m_groups.at(g);
            QList<std::optional<QSize>> boxes{std::nullopt};
            if (m_request.extraSize)
                boxes.append(m_request.extraSize);
            const std::variant<const ArtworkImage *, QString> image = chosenImage(group);
            for (const std::optional<QSize> &box : boxes) {
                PlannedFile file{.group = g, .box = box};
                const QString suffix = box ? QStringLiteral(".%1x%2").arg(box->width()).arg(box->height()) : QString();
                file.result.fileName = group.name + suffix + QStringLiteral(".jpg");
                file.result.trackCount = int(group.images.size());
                if (box && coverPlayerPath(file.result.fileName).toUtf8().size() > longestPlayerPath) {
                    ++m_report.skippedTooLong;
                    continue;
                }
                if (const QString *problem = std::get_if<QString>(&image)) {
                    file.result.outcome = CoverResult::Outcome::failed;
                    file.result.reason = QStringLiteral("The cover cannot be read: %1.").arg(*problem);
                } else {
                    file.image = std::get<const ArtworkImage *>(image);
                    file.pixels = hexOf(std::get<quint64>(m_hashes.at(m_imageIndex.value(file.image))));
                    judge(file);
                }
                m_files.append(std::move(file));
            }
        }
    }

    // Whether the file needs writing: left alone when Kestrune wrote it from these pixels, kept when
    // Kestrune did not write it or it was edited since (unless forced).
    void judge(PlannedFile &file) const
    {
        const QString &name = file.result.fileName;
        const RecordEntry *entry = m_record.entryAt(recordFolder + name);
        if (entry && entry->kind != RecordEntry::Kind::cover)
            entry = nullptr;
        const DeviceFolder::EntryKind kind = m_folder.isOpen() ? m_folder.entryKind(name) : DeviceFolder::EntryKind::missing;
        if (kind == DeviceFolder::EntryKind::missing) {
            file.needsWrite = true;
            return;
        }
        if (kind == DeviceFolder::EntryKind::folder || kind == DeviceFolder::EntryKind::other ||
            kind == DeviceFolder::EntryKind::unreadable) {
            file.result.outcome = CoverResult::Outcome::failed;
            file.result.reason = QStringLiteral("Something that is not a file is in the cover's place.");
            return;
        }
        const bool ours = entry && kind == DeviceFolder::EntryKind::file && stillAsRecorded(m_folder, name, *entry);
        if (ours && entry->pixels == file.pixels) {
            file.result.outcome = CoverResult::Outcome::unchanged;
            return;
        }
        if (!ours && !m_request.force) {
            file.result.outcome = CoverResult::Outcome::kept;
            file.result.reason = entry ? QStringLiteral("edited since Kestrune wrote it")
                                       : QStringLiteral("not written by Kestrune; --force replaces it");
            return;
        }
        file.needsWrite = true;
    }

    void writeFiles()
    {
        QList<qsizetype> toWrite;
        QList<CoverJob> jobs;
        for (qsizetype i = 0; i < m_files.size(); ++i) {
            const PlannedFile &file = m_files.at(i);
            if (file.needsWrite) {
                toWrite.append(i);
                jobs.append(CoverJob{file.result.fileName, file.image, file.box});
            }
        }
        const qsizetype judged = m_files.size() - toWrite.size();
        if (m_progress)
            m_progress(judged, m_files.size());
        if (m_request.dryRun) {
            for (qsizetype j = 0; j < jobs.size(); ++j)
                m_files[toWrite.at(j)].result.size = coverJobSize(m_artwork, jobs.at(j));
            finishResults();
            return;
        }
        const QList<CoverJobResult> written = writeCovers(
            m_folder, m_artwork, jobs,
            [&](qsizetype staged) {
                if (m_progress)
                    m_progress(judged + staged, m_files.size());
            },
            m_stop);
        for (qsizetype j = 0; j < jobs.size(); ++j) {
            PlannedFile &file = m_files[toWrite.at(j)];
            const CoverJobResult &result = written.at(j);
            if (result.failure) {
                file.result.outcome = CoverResult::Outcome::failed;
                file.result.reason = *result.failure;
            } else {
                file.result.size = result.size;
                file.digest = result.digest;
            }
        }
        m_report.stopped = m_stop && m_stop->load();
        finishResults();
    }

    void finishResults()
    {
        for (const PlannedFile &file : std::as_const(m_files))
            m_report.results.append(file.result);
    }

    void mirror()
    {
        QSet<QString> produced;
        for (const PlannedFile &file : std::as_const(m_files))
            produced.insert(coverNameKey(file.result.fileName));
        bool removedAny = false;
        for (const RecordEntry &entry : std::as_const(m_record.entries)) {
            if (entry.kind != RecordEntry::Kind::cover || !entry.path.startsWith(recordFolder))
                continue;
            const QString name = entry.path.mid(recordFolder.size());
            if (name.contains(u'/') || produced.contains(coverNameKey(name)) || !m_folder.isOpen() ||
                m_folder.entryKind(name) != DeviceFolder::EntryKind::file)
                continue;
            CoverResult result{.fileName = name, .outcome = CoverResult::Outcome::removed,
                               .reason = QStringLiteral("no track needs it any more")};
            if (!stillAsRecorded(m_folder, name, entry)) {
                result.outcome = CoverResult::Outcome::kept;
                result.reason = QStringLiteral("edited since Kestrune wrote it");
            } else if (!m_request.dryRun) {
                if (const std::optional<QString> failure = m_folder.removeFile(name)) {
                    result.outcome = CoverResult::Outcome::failed;
                    result.reason = *failure;
                } else {
                    removedAny = true;
                }
            }
            m_removals.append({entry.path, m_report.results.size()});
            m_report.results.append(result);
        }
        if (removedAny) {
            if (const std::optional<QString> failure = m_folder.flush()) {
                for (CoverResult &result : m_report.results) {
                    if (result.outcome == CoverResult::Outcome::removed) {
                        result.outcome = CoverResult::Outcome::failed;
                        result.reason = QStringLiteral("The file was removed, but the device did not confirm it: ") + *failure;
                    }
                }
            }
        }
    }

    // The record: each cover now in place from known pixels, plus the covers this run neither produced
    // nor removed whose files are still there.
    void updateRecord()
    {
        QList<RecordEntry> fresh;
        QSet<QString> handled;
        for (const PlannedFile &file : std::as_const(m_files)) {
            const QString path = recordFolder + file.result.fileName;
            handled.insert(path);
            const RecordEntry *earlier = m_record.entryAt(path);
            if (file.result.outcome == CoverResult::Outcome::written) {
                fresh.append(RecordEntry{.kind = RecordEntry::Kind::cover, .path = path,
                                         .sha256 = file.digest,
                                         .coverName = m_groups.at(file.group).name, .pixels = file.pixels,
                                         .stamp = m_folder.stampOf(file.result.fileName).value_or(DeviceFolder::Stamp{})});
            } else if (file.result.outcome == CoverResult::Outcome::unchanged && earlier) {
                RecordEntry entry = *earlier;
                entry.stamp = m_folder.stampOf(file.result.fileName).value_or(DeviceFolder::Stamp{});
                fresh.append(entry);
            } else if (file.result.outcome == CoverResult::Outcome::failed && earlier) {
                fresh.append(*earlier); // not written this time: what was known of it stays
            }
        }
        for (const auto &[path, index] : std::as_const(m_removals)) {
            if (m_report.results.at(index).outcome == CoverResult::Outcome::failed) {
                if (const RecordEntry *earlier = m_record.entryAt(path))
                    fresh.append(*earlier);
            }
            handled.insert(path);
        }
        for (const RecordEntry &entry : std::as_const(m_record.entries)) {
            if (entry.kind == RecordEntry::Kind::cover && entry.path.startsWith(recordFolder) && !handled.contains(entry.path) &&
                m_folder.entryKind(entry.path.mid(recordFolder.size())) == DeviceFolder::EntryKind::file)
                fresh.append(entry);
        }
        DeviceRecord updated = m_record;
        updated.replaceBelow(recordFolder, RecordEntry::Kind::cover, fresh);
        if (!(updated == m_record))
            m_report.recordFailure = writeDeviceRecord(m_root, updated);
    }

    const DeviceFolder &m_root;
    const ArtworkLibrary &m_artwork;
    const CoverRunRequest &m_request;
    const CoverProgress &m_progress;
    const std::atomic<bool> *m_stop;
    CoverRunReport m_report;
    DeviceFolder m_folder;
    DeviceRecord m_record;
    QList<CoverGroup> m_groups;
    QHash<const ArtworkImage *, qsizetype> m_imageIndex;
    QList<std::variant<quint64, QString>> m_hashes;
    QList<PlannedFile> m_files;
    QList<std::pair<QString, qsizetype>> m_removals; // record path, result index
};

} // namespace

CoverRunReport runCovers(const DeviceFolder &deviceRoot, const ArtworkLibrary &artwork, const CoverRunRequest &request,
                         const CoverProgress &progress, const std::atomic<bool> *stop)
{
    return CoverRun(deviceRoot, artwork, request, progress, stop).run();
}

} // namespace kestrune
