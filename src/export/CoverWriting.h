#pragma once

#include "DeviceFolder.h"
#include "core/ArtworkLibrary.h"

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QString>

#include <atomic>
#include <functional>
#include <optional>

namespace kestrune {

// One cover file to encode and put in place.
struct CoverJob {
    QString fileName;
    const ArtworkImage *image = nullptr;
    std::optional<QSize> box; // fitted into this box; none: the picture at its own size
};

// What became of a job: the size of the picture and the digest of the bytes now on the device, or why
// they are not there.
struct CoverJobResult {
    QSize size;
    QByteArray digest;
    std::optional<QString> failure;
};

// Encodes the covers on every core while this thread stages each one, in order, into one durable batch in
// `folder` as soon as it is ready, so that the writes overlap the encoding; then puts them in place.
// `staged(count)` is told how many are staged so far; a stop abandons what is not yet in place.
[[nodiscard]] QList<CoverJobResult> writeCovers(const DeviceFolder &folder, const ArtworkLibrary &artwork,
                                                const QList<CoverJob> &jobs,
                                                const std::function<void(qsizetype staged)> &staged,
                                                const std::atomic<bool> *stop);

// The size a job's picture gets, without encoding it (for a dry run); empty when it cannot be read.
[[nodiscard]] QSize coverJobSize(const ArtworkLibrary &artwork, const CoverJob &job);

} // namespace kestrune
