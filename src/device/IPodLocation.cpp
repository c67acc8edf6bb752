#include "IPodLocation.h"

#include "core/IPodTree.h"

#include <QDir>
#include <QFileInfo>

namespace kestrune {

namespace {

bool fileExists(const QString &path)
{
    return QFileInfo::exists(path);
}

} // namespace

std::optional<IPodDevice> inspectIPodLocation(const QUrl &folderURL, const VolumeInfoReader &volumeInfo)
{
    const QString root = folderURL.toLocalFile();
    if (!holdsIPodControlFolder(root)) // a link named iPod_Control is not an iPod
        return std::nullopt;
    const QDir dir(root);
    const QString database = dir.filePath(QStringLiteral("iPod_Control/iTunes/iTunesDB"));
    const QString shuffleDatabase = dir.filePath(QStringLiteral("iPod_Control/iTunes/iTunesSD"));

    QString databasePath;
    if (fileExists(database))
        databasePath = database;
    else if (fileExists(shuffleDatabase))
        databasePath = shuffleDatabase;
    else
        return std::nullopt;

    const VolumeInfo volume = volumeInfo(root);
    QString name = volume.name.value_or(QString());
    if (name.isEmpty())
        name = QFileInfo(QDir::cleanPath(root)).fileName();
    if (name.isEmpty())
        name = QStringLiteral("iPod");

    return IPodDevice{.id = QUuid::createUuid(),
                      .name = name,
                      .mountURL = folderURL,
                      .itunesDBURL = QUrl::fromLocalFile(databasePath),
                      .playlistsURL = QUrl::fromLocalFile(dir.filePath(QStringLiteral("Playlists"))),
                      .totalDiskSpace = volume.totalBytes,
                      .freeDiskSpace = volume.availableBytes};
}

} // namespace kestrune
