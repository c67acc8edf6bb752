#pragma once

#include <QDateTime>
#include <QHashFunctions>
#include <QString>
#include <QUrl>

#include <optional>

namespace kestrune {

// A playlist file in the device's playlists folder, as the file manager pane lists it.
struct RockboxFileItem {
    QString name;     // with its extension
    QString baseName; // without it
    QUrl fileURL;
    std::optional<qint64> sizeBytes;
    std::optional<QDateTime> modificationDate;
    QByteArray nameBytes; // the name's bytes when they are not valid UTF-8 (`name` then shows them as "\xNN")

    bool operator==(const RockboxFileItem &) const = default;

    [[nodiscard]] QString id() const { return fileURL.toLocalFile(); }
};

inline size_t qHash(const RockboxFileItem &item, size_t seed = 0) noexcept
{
    return qHashMulti(seed, item.name, item.baseName, item.fileURL, item.sizeBytes.value_or(-1),
                      item.modificationDate ? item.modificationDate->toMSecsSinceEpoch() : qint64(-1), item.nameBytes);
}

} // namespace kestrune
