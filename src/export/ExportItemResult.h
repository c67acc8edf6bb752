#pragma once

#include <QString>
#include <QUrl>
#include <QUuid>

#include <optional>

namespace kestrune {

// What became of one exported playlist, or of one file a mirror run looked at. Failures still carry the
// file they aimed at.
struct ExportItemResult {
    enum class Outcome {
        written,   // new bytes are on the device (status "written", or "updated" with isUpdate)
        unchanged, // the file already held exactly these bytes: nothing was written
        removed,   // a file Kestrune wrote for a playlist no longer exported (mirror)
        kept,      // such a file, left because it was edited since Kestrune wrote it (mirror)
    };

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
    Outcome outcome = Outcome::written;
    QString reason; // why a file was removed or kept: "deleted in iTunes", "renamed in iTunes", ...

    bool operator==(const ExportItemResult &) const = default;

    // "written", "updated", "unchanged", "removed", "kept" or "failed".
    [[nodiscard]] QString status() const
    {
        if (!isSuccess)
            return QStringLiteral("failed");
        switch (outcome) {
        case Outcome::unchanged:
            return QStringLiteral("unchanged");
        case Outcome::removed:
            return QStringLiteral("removed");
        case Outcome::kept:
            return QStringLiteral("kept");
        case Outcome::written:
            break;
        }
        return isUpdate ? QStringLiteral("updated") : QStringLiteral("written");
    }
};

} // namespace kestrune
