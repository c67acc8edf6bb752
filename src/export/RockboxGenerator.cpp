#include "RockboxGenerator.h"

#include "PlaylistFileName.h"
#include "PlaylistWriteBatch.h"
#include "M3UContent.h"
#include "PlaylistFolder.h"
#include "WriteScope.h"
#include "core/FileSystemError.h"

#include <QCryptographicHash>
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

QByteArray RockboxGenerator::contentDigest(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
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

QStringList RockboxGenerator::playlistFilenames(const QList<Playlist> &playlists, const ConversionOptions &options,
                                                const QList<std::optional<QString>> &earlierBaseNames)
{
    const QString extension = options.useM3U8Extension ? QStringLiteral(".m3u8") : QStringLiteral(".m3u");
    QStringList baseNames;
    baseNames.reserve(playlists.size());
    for (const Playlist &playlist : playlists)
        baseNames.append(options.sanitizeFilenames ? sanitizeFilename(playlist.name) : playlist.name);
    QStringList names = distinctBaseNames(baseNames, options.sanitizeFilenames, earlierBaseNames);
    for (QString &name : names)
        name += extension;
    return names;
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
    const WriteScope scope = writeScopeFor(playlistsBaseFolder.toLocalFile(), true);
    return exportPlaylists(playlists, scope.destination(true), options, written, nullptr);
}

QList<ExportItemResult> RockboxGenerator::exportPlaylists(const QList<Playlist> &playlists,
                                                          const DeviceFolder &destination,
                                                          const ConversionOptions &options,
                                                          const RunProgress &written,
                                                          const std::atomic<bool> *stop,
                                                          const QStringList &givenFilenames,
                                                          QList<QByteArray> *digests,
                                                          const UnchangedProof &knownUnchanged) const
{
    const QString folder = destination.path();
    PlaylistWriteBatch batch(destination, stop);
    Q_ASSERT(givenFilenames.isEmpty() || givenFilenames.size() == playlists.size());
    const QStringList filenames = givenFilenames.isEmpty() ? playlistFilenames(playlists, options) : givenFilenames;
    const std::optional<QString> badPrefix = controlCharacterInPrefix(options.customPathPrefix);
    QList<ExportItemResult> results;
    QList<qsizetype> handles; // the batch's handle of each result, -1 when nothing was staged
    for (const Playlist &playlist : playlists) {
        const QString &filename = filenames.at(results.size());
        const QString intended = playlistFilename(playlist, options);
        ExportItemResult &result = results.emplaceBack(
            ExportItemResult{.playlistName = playlist.name,
                             .filename = filename,
                             .fileURL = QUrl::fromLocalFile(folder + u'/' + filename),
                             .trackCount = int(playlist.tracks.size()),
                             .isUpdate = playlist.existingRockboxFile.has_value(),
                             .intendedFilename = intended != filename ? std::optional(intended) : std::nullopt});
        handles.append(-1);
        if (badPrefix)
            result.errorMessage = QStringLiteral("Il prefisso dei percorsi contiene il carattere di controllo %1, "
                                                 "che spezzerebbe ogni voce della playlist.")
                                      .arg(*badPrefix);
        if (!result.errorMessage)
            result.errorMessage = refusedName(playlist.name, folder, options);
        std::optional<QByteArray> bytes;
        if (!result.errorMessage) {
            bytes = encodedStrictly(generateM3UContent(playlist, options));
            if (!bytes)
                result.errorMessage = QStringLiteral("Impossibile codificare la playlist in formato UTF-8.");
        }
        const QByteArray digest = bytes && (digests || knownUnchanged) ? contentDigest(*bytes) : QByteArray();
        if (digests)
            digests->append(digest);
        if (bytes && ((knownUnchanged && knownUnchanged(filename, digest)) || destination.holdsExactly(filename, *bytes))) {
            // nothing to write, nor to flush
            result.outcome = ExportItemResult::Outcome::unchanged;
            result.isSuccess = true;
        } else if (bytes) {
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
    const QFileInfo entry(fileURL.toLocalFile());
    deleteItem(writeScopeFor(entry.absolutePath(), false).destination(false), entry.fileName());
}

void RockboxGenerator::deleteItem(const DeviceFolder &folder, const QString &name) const
{
    const QString path = folder.path() + u'/' + name;
    if (!folder.isOpen())
        throw FileSystemError{path, *folder.error()};
    if (folder.entryKind(name) == DeviceFolder::EntryKind::folder) {
        const DeviceFolder inner = folder.openFolder(name);
        if (!inner.isOpen() || !QDir(inner.path()).removeRecursively())
            throw FileSystemError{path, QStringLiteral("The folder “%1” couldn’t be removed.").arg(name)};
        return;
    }
    if (const std::optional<QString> reason = folder.removeFile(name))
        throw FileSystemError{path, QStringLiteral("“%1” couldn’t be removed: %2").arg(name, *reason)};
}

int RockboxGenerator::cleanDotFiles(const QUrl &root) const
{
    return cleanDotFileTree(root).removed;
}

DotFileCleaner::Report RockboxGenerator::cleanDotFileTree(const QUrl &root) const
{
    return m_cleaner.clean(root.toLocalFile());
}

DotFileCleaner::Report RockboxGenerator::cleanDotFileTree(const DeviceFolder &root) const
{
    return m_cleaner.clean(root);
}

} // namespace kestrune
