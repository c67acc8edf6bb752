#pragma once

#include <QDateTime>
#include <QHashFunctions>
#include <QString>
#include <QUrl>

#include <optional>

namespace kestrune {

// A playlist file already in the device's playlists folder that a library playlist maps to.
// It lives in the core layer because Playlist carries one; the export layer produces it.
struct ExistingRockboxFile {
    QString filename; // full name, extension included
    QString baseName; // name without its extension
    QUrl fileURL;
    std::optional<QDateTime> modificationDate;

    bool operator==(const ExistingRockboxFile &) const = default;

    [[nodiscard]] QString id() const { return fileURL.toLocalFile(); }
};

inline size_t qHash(const ExistingRockboxFile &file, size_t seed = 0) noexcept
{
    return qHashMulti(seed, file.filename, file.baseName, file.fileURL,
                      file.modificationDate ? file.modificationDate->toMSecsSinceEpoch() : qint64(-1));
}

} // namespace kestrune
