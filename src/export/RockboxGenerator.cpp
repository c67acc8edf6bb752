#include "RockboxGenerator.h"

#include "PlaylistFileName.h"
#include "PlaylistWriteBatch.h"
#include "M3UContent.h"
#include "PlaylistFolder.h"
#include "core/FileSystemError.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringEncoder>

namespace kestrune {

namespace {

// With sanitising off a name is used as it is; it may still not leave the destination folder, by its
// own text or through a linked sub-folder.
bool leavesFolder(const QString &baseName, const QString &folder, const QString &path)
{
    const QString parent = QFileInfo(path).absolutePath();
    const QString realParent = QFileInfo(parent).canonicalFilePath();
    const QString realFolder = QFileInfo(folder).canonicalFilePath();
    if (!realParent.isEmpty() && !realFolder.isEmpty() && realParent != realFolder &&
        !realParent.startsWith(realFolder + u'/'))
        return true;

    static const QRegularExpression driveLetter(QStringLiteral("^[A-Za-z]:"));
    if (baseName.startsWith(u'/') || baseName.startsWith(u'\\') || driveLetter.match(baseName).hasMatch())
        return true;
    const QStringList segments = baseName.split(QRegularExpression(QStringLiteral("[/\\\\]")));
    return segments.contains(QStringLiteral(".."));
}

// Why a name cannot be written as it is, when sanitising is off.
std::optional<QString> refusedName(const QString &name, const QString &folder, const ConversionOptions &options)
{
    if (options.sanitizeFilenames)
        return std::nullopt;
    if (std::optional<QString> character = unwritableCharacterIn(name))
        return character;
    if (leavesFolder(name, folder, folder + u'/' + name))
        return QStringLiteral("Il nome della playlist porterebbe il file fuori dalla cartella di "
                              "destinazione: '%1'.")
            .arg(name);
    return std::nullopt;
}

std::optional<QByteArray> encodedStrictly(const QString &text)
{
    QStringEncoder encoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    QByteArray bytes = encoder.encode(text);
    if (encoder.hasError() || !text.isValidUtf16())
        return std::nullopt;
    return bytes;
}

} // namespace

QString RockboxGenerator::generateM3UContent(const Playlist &playlist, const ConversionOptions &options) const
{
    return m3uContent(playlist, options);
}

QString RockboxGenerator::sanitizeFilename(const QString &name)
{
    return sanitizedPlaylistName(name);
}

QString RockboxGenerator::playlistFilename(const Playlist &playlist, const ConversionOptions &options)
{
    const QString extension = options.useM3U8Extension ? QStringLiteral("m3u8") : QStringLiteral("m3u");
    const QString baseName = options.sanitizeFilenames ? sanitizeFilename(playlist.name) : playlist.name;
    return baseName + u'.' + extension;
}

ExportItemResult RockboxGenerator::exportPlaylist(const Playlist &playlist, const QUrl &playlistsBaseFolder,
                                                  const ConversionOptions &options) const
{
    return exportPlaylists({playlist}, playlistsBaseFolder, options).first();
}

QList<ExportItemResult> RockboxGenerator::exportPlaylists(const QList<Playlist> &playlists,
                                                          const QUrl &playlistsBaseFolder,
                                                          const ConversionOptions &options,
                                                          const RunProgress &written) const
{
    const QString folder = playlistsBaseFolder.toLocalFile();
    PlaylistWriteBatch batch(folder);
    QList<ExportItemResult> results;
    QList<qsizetype> handles; // the batch's handle of each result, -1 when nothing was staged
    for (const Playlist &playlist : playlists) {
        const QString filename = playlistFilename(playlist, options);
        ExportItemResult &result = results.emplaceBack(
            ExportItemResult{.playlistName = playlist.name,
                             .filename = filename,
                             .fileURL = QUrl::fromLocalFile(folder + u'/' + filename),
                             .trackCount = int(playlist.tracks.size()),
                             .isUpdate = playlist.existingRockboxFile.has_value()});
        handles.append(-1);
        result.errorMessage = refusedName(playlist.name, folder, options);
        std::optional<QByteArray> bytes;
        if (!result.errorMessage) {
            bytes = encodedStrictly(generateM3UContent(playlist, options));
            if (!bytes)
                result.errorMessage = QStringLiteral("Impossibile codificare la playlist in formato UTF-8.");
        }
        if (bytes) {
            const PlaylistWriteBatch::Staged staged = batch.stage(filename, *bytes);
            handles.last() = staged.handle;
            result.errorMessage = staged.error;
        }
        if (written)
            written(results.size());
    }
    const QList<std::optional<QString>> answers = batch.commit();
    for (qsizetype i = 0; i < results.size(); ++i) {
        if (handles.at(i) < 0)
            continue;
        results[i].errorMessage = answers.at(handles.at(i));
        results[i].isSuccess = !results[i].errorMessage;
    }
    return results;
}

QList<RockboxFileItem> RockboxGenerator::listPlaylists(const QUrl &playlistsBaseURL) const
{
    return listPlaylistFiles(playlistsBaseURL.toLocalFile());
}

QList<ExistingRockboxFile> RockboxGenerator::scanExistingPlaylists(const QUrl &playlistsBaseURL) const
{
    return scanExistingPlaylistFiles(playlistsBaseURL.toLocalFile());
}

void RockboxGenerator::deleteItem(const QUrl &fileURL) const
{
    const QString path = fileURL.toLocalFile();
    const QFileInfo entry(path);
    if (entry.isDir() && !entry.isSymLink()) {
        if (!QDir(path).removeRecursively()) {
            throw FileSystemError{
                path, QStringLiteral("The folder “%1” couldn’t be removed.").arg(entry.fileName())};
        }
        return;
    }
    QFile file(path);
    if (!file.remove()) {
        const QString reason = entry.exists() || entry.isSymLink()
                                   ? file.errorString()
                                   : QStringLiteral("No such file or directory");
        throw FileSystemError{path,
                              QStringLiteral("“%1” couldn’t be removed: %2").arg(entry.fileName(), reason)};
    }
}

int RockboxGenerator::cleanDotFiles(const QUrl &root) const
{
    return cleanDotFileTree(root).removed;
}

DotFileCleaner::Report RockboxGenerator::cleanDotFileTree(const QUrl &root) const
{
    return m_cleaner.clean(root.toLocalFile());
}

} // namespace kestrune
