#pragma once

#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>

namespace kestrune {

// What became of one exported playlist. Failures still carry the file they aimed at.
struct ExportItemResult {
    QUuid id = QUuid::createUuid();
    QString playlistName; // as in the library, never the sanitised form
    QString filename;
    QUrl fileURL;
    int trackCount = 0; // resolved tracks
    bool isSuccess = false;
    bool isUpdate = false; // the playlist already had a matching file when the export started
    std::optional<QString> errorMessage;

    bool operator==(const ExportItemResult &) const = default;
};

} // namespace kestrune
