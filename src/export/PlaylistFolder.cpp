#include "PlaylistFolder.h"

#include "FileNameOrder.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace kestrune {

namespace {

bool isPlaylistFile(const QFileInfo &entry)
{
    // A link to a folder is itself no folder, as the system's directory flag reports it.
    if (entry.isDir() && !entry.isSymLink())
        return false;
    const QString extension = entry.suffix().toLower();
    return extension == QLatin1StringView("m3u") || extension == QLatin1StringView("m3u8");
}

QList<QFileInfo> playlistEntries(const QString &folder)
{
    QList<QFileInfo> entries;
    if (!QFileInfo::exists(folder))
        return entries;
    // Without QDir::Hidden, every name starting with "." is left out.
    const QFileInfoList all = QDir(folder).entryInfoList(
        QDir::Files | QDir::Dirs | QDir::System | QDir::NoDotAndDotDot, QDir::NoSort);
    std::copy_if(all.cbegin(), all.cend(), std::back_inserter(entries), isPlaylistFile);
    const FileNameOrder order;
    std::stable_sort(entries.begin(), entries.end(), [&order](const QFileInfo &a, const QFileInfo &b) {
        return order.lessThan(a.fileName(), b.fileName());
    });
    return entries;
}

std::optional<QDateTime> modificationDateOf(const QFileInfo &entry)
{
    const QDateTime date = entry.lastModified();
    return date.isValid() ? std::optional(date) : std::nullopt;
}

} // namespace

QList<RockboxFileItem> listPlaylistFiles(const QString &folder)
{
    QList<RockboxFileItem> items;
    for (const QFileInfo &entry : playlistEntries(folder)) {
        items.append(RockboxFileItem{
            .name = entry.fileName(),
            .baseName = entry.completeBaseName(),
            .fileURL = QUrl::fromLocalFile(entry.filePath()),
            .sizeBytes = entry.exists() ? std::optional(entry.size()) : std::nullopt,
            .modificationDate = modificationDateOf(entry),
        });
    }
    return items;
}

QList<ExistingRockboxFile> scanExistingPlaylistFiles(const QString &folder)
{
    QList<ExistingRockboxFile> files;
    for (const QFileInfo &entry : playlistEntries(folder)) {
        files.append(ExistingRockboxFile{
            .filename = entry.fileName(),
            .baseName = entry.completeBaseName(),
            .fileURL = QUrl::fromLocalFile(entry.filePath()),
            .modificationDate = modificationDateOf(entry),
        });
    }
    return files;
}

} // namespace kestrune
