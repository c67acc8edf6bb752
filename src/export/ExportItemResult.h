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
    // The name the file would have had, when another playlist of the run has it but for case: on the
    // player's case-blind volume both would be one file, so this one was given a " (2)"-style suffix.
    std::optional<QString> intendedFilename;

    bool operator==(const ExportItemResult &) const = default;
};

} // namespace kestrune
