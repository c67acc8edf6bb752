#include "RockboxGenerator.h"

#include "AtomicFile.h"
#include "M3UContent.h"
#include "PlaylistFolder.h"
#include "core/FileSystemError.h"
#include "core/TextTrim.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringEncoder>

namespace kestrune {

namespace {

bool isUnsafeInFileName(QChar c)
{
    switch (c.unicode()) {
    case u':':
    case u'/':
    case u'\\':
    case u'|':
    case u'*':
    case u'?':
    case u'<':
    case u'>':
    case u'"':
        return true;
    default:
        return false;
    }
}

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
    QString safe = name;
    for (QChar &c : safe) {
        if (isUnsafeInFileName(c))
            c = u'_';
    }
    safe = trimmedWhitespaceAndNewlines(safe);
    return safe.isEmpty() ? QStringLiteral("Playlist") : safe;
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
    const QString filename = playlistFilename(playlist, options);
    const QString folder = playlistsBaseFolder.toLocalFile();
    const QString path = folder + u'/' + filename;

    ExportItemResult result{.playlistName = playlist.name,
                            .filename = filename,
                            .fileURL = QUrl::fromLocalFile(path),
                            .trackCount = int(playlist.tracks.size()),
                            .isUpdate = playlist.existingRockboxFile.has_value()};
    const auto failed = [&result](QString message) {
        result.errorMessage = std::move(message);
        return result;
    };

    if (!options.sanitizeFilenames && leavesFolder(playlist.name, folder, path)) {
        return failed(QStringLiteral("Il nome della playlist porterebbe il file fuori dalla cartella di "
                                     "destinazione: '%1'.")
                          .arg(playlist.name));
    }
    if (const std::optional<QString> error = createFolder(folder))
        return failed(*error);
    const std::optional<QByteArray> bytes = encodedStrictly(generateM3UContent(playlist, options));
    if (!bytes)
        return failed(QStringLiteral("Impossibile codificare la playlist in formato UTF-8."));
    if (const std::optional<QString> error = writeFileAtomically(path, *bytes))
        return failed(*error);
    result.isSuccess = true;
    return result;
}

void RockboxGenerator::flushToDisk(const QUrl &playlistsBaseFolder) const
{
    kestrune::flushToDisk(playlistsBaseFolder.toLocalFile());
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
    return m_cleaner.clean(root.toLocalFile());
}

} // namespace kestrune
