#include "CoverWriting.h"

#include "Parallel.h"
#include "PlaylistWriteBatch.h"
#include "RockboxGenerator.h"
#include "imaging/JpegCodec.h"
#include "imaging/PictureScaling.h"

#include <QHash>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <variant>

namespace kestrune {

namespace {

struct Encoded {
    QByteArray bytes;
    CoverJobResult result;
};

// Runs on any thread.
Encoded encode(const ArtworkLibrary &artwork, const CoverJob &job)
{
    const std::variant<ArtworkLibrary::Frame, QString> frame = artwork.frameOf(*job.image);
    if (const QString *problem = std::get_if<QString>(&frame))
        return {{}, {.failure = QStringLiteral("The cover cannot be read: %1.").arg(*problem)}};
    const auto &found = std::get<ArtworkLibrary::Frame>(frame);
    RgbPicture source = *decodeThumbnail(found.bytes, found.format, found.area);
    if (job.box)
        source = scaledPicture(source, fittedSize(QSize(source.width, source.height), *job.box));
    // Rockbox draws a cover at most 128 pixels wide (PictureFlow; 120 on the now-playing screen): colour
    // at half resolution loses nothing it shows once that half is still as large, and encodes faster.
    const Colour colour = qMin(source.width, source.height) >= 2 * 128 ? Colour::half : Colour::full;
    const std::optional<QByteArray> bytes = encodeBaselineJpeg(source, colour);
    if (!bytes)
        return {{}, {.failure = QStringLiteral("The cover could not be encoded as JPEG.")}};
    return {*bytes, {.size = QSize(source.width, source.height), .digest = RockboxGenerator::contentDigest(*bytes)}};
}

} // namespace

QList<CoverJobResult> writeCovers(const DeviceFolder &folder, const ArtworkLibrary &artwork, const QList<CoverJob> &jobs,
                                  const std::function<void(qsizetype)> &staged, const std::atomic<bool> *stop)
{
    const auto stopped = [stop] { return stop && stop->load(); };
    QList<CoverJobResult> results(jobs.size(), CoverJobResult{.failure = PlaylistWriteBatch::interruptedReason()});
    QList<Encoded> encoded(jobs.size());
    const std::unique_ptr<bool[]> ready(new bool[jobs.size()]());
    std::mutex readyLock;
    std::condition_variable readyChanged;
    std::thread encoding([&] {
        forEachInParallel(jobs.size(), [&](qsizetype i) {
            if (!stopped())
                encoded[i] = encode(artwork, jobs.at(i));
            const std::lock_guard lock(readyLock);
            ready[i] = true;
            readyChanged.notify_all();
        });
    });
    PlaylistWriteBatch batch(folder, stop);
    QHash<qsizetype, qsizetype> jobOfHandle;
    for (qsizetype i = 0; i < jobs.size(); ++i) {
        {
            std::unique_lock lock(readyLock);
            readyChanged.wait(lock, [&] { return ready[i]; });
        }
        Encoded &cover = encoded[i];
        if (cover.result.failure) {
            results[i] = cover.result;
            continue;
        }
        if (cover.bytes.isEmpty() || stopped())
            continue; // stopped before it: not written
        const PlaylistWriteBatch::Staged stagedCover = batch.stage(jobs.at(i).fileName, cover.bytes);
        cover.bytes.clear(); // on its way; its digest is kept
        if (stagedCover.error) {
            results[i] = CoverJobResult{.failure = *stagedCover.error};
        } else {
            results[i] = cover.result; // until the commit says otherwise
            jobOfHandle.insert(stagedCover.handle, i);
        }
        if (staged && (i % 16 == 15 || i + 1 == jobs.size()))
            staged(i + 1);
    }
    encoding.join();
    const QList<std::optional<QString>> committed = batch.commit();
    for (auto it = jobOfHandle.cbegin(); it != jobOfHandle.cend(); ++it) {
        if (const std::optional<QString> &failure = committed.value(it.key(), PlaylistWriteBatch::interruptedReason()))
            results[it.value()] = CoverJobResult{.failure = *failure};
    }
    return results;
}

QSize coverJobSize(const ArtworkLibrary &artwork, const CoverJob &job)
{
    const std::variant<ArtworkLibrary::Frame, QString> frame = artwork.frameOf(*job.image);
    const auto *found = std::get_if<ArtworkLibrary::Frame>(&frame);
    if (!found)
        return {};
    const QSize picture(found->area.width, found->area.height);
    return job.box ? fittedSize(picture, *job.box) : picture;
}

} // namespace kestrune
