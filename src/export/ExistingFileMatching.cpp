#include "ExistingFileMatching.h"

#include "PlaylistFileName.h"
#include "RockboxGenerator.h"

#include <QRegularExpression>
#include <QSet>

namespace kestrune {

namespace {

QString comparable(const QString &text)
{
    return text.toLower().normalized(QString::NormalizationForm_C);
}

// The file's texts prepared once, so that many playlists can be matched against them cheaply.
struct FileKeys {
    QString baseName;
    QString filename;
};

QList<FileKeys> keysOf(const QList<ExistingRockboxFile> &files)
{
    QList<FileKeys> keys;
    keys.reserve(files.size());
    for (const ExistingRockboxFile &file : files)
        keys.append(FileKeys{comparable(file.baseName), comparable(file.filename)});
    return keys;
}

// The base names an export of these playlists would write, made distinct for a case-blind volume.
QStringList exportedBaseNames(const QStringList &playlistNames)
{
    QStringList names;
    names.reserve(playlistNames.size());
    for (const QString &name : playlistNames)
        names.append(RockboxGenerator::sanitizeFilename(name));
    return distinctBaseNames(names, true);
}

std::optional<qsizetype> matchIndexOfBase(const QString &baseName, const QList<FileKeys> &keys)
{
    const QString key = comparable(baseName);
    const QString asM3U8 = key + QStringLiteral(".m3u8");
    const QString asM3U = key + QStringLiteral(".m3u");
    for (qsizetype i = 0; i < keys.size(); ++i) {
        const FileKeys &file = keys.at(i);
        if (file.baseName == key || file.filename == asM3U8 || file.filename == asM3U)
            return i;
    }
    return std::nullopt;
}

} // namespace

std::optional<ExistingRockboxFile> matchingExistingFile(const QString &playlistName,
                                                        const QList<ExistingRockboxFile> &files)
{
    const std::optional<qsizetype> index =
        matchIndexOfBase(RockboxGenerator::sanitizeFilename(playlistName), keysOf(files));
    return index ? std::optional(files.at(*index)) : std::nullopt;
}

QSet<QString> playlistMatchKeys(const QStringList &playlistNames)
{
    QSet<QString> keys;
    for (const QString &name : exportedBaseNames(playlistNames))
        keys.insert(comparable(name));
    return keys;
}

bool belongsToAny(const ExistingRockboxFile &file, const QSet<QString> &keys)
{
    static const QRegularExpression part(QStringLiteral(" \\(\\d+ of \\d+\\)$"));
    const QString filename = comparable(file.filename);
    for (const QString &base : {comparable(file.baseName), comparable(file.baseName).remove(part)}) {
        if (keys.contains(base))
            return true;
    }
    for (const QLatin1StringView extension : {QLatin1StringView(".m3u8"), QLatin1StringView(".m3u")}) {
        if (filename.endsWith(extension) && keys.contains(filename.chopped(extension.size())))
            return true;
    }
    return false;
}

void attachExistingFiles(QList<Playlist> &playlists, const QList<ExistingRockboxFile> &files)
{
    const QList<FileKeys> keys = keysOf(files);
    QStringList names;
    for (const Playlist &playlist : std::as_const(playlists))
        names.append(playlist.name);
    const QStringList baseNames = exportedBaseNames(names);
    for (qsizetype i = 0; i < playlists.size(); ++i) {
        Playlist &playlist = playlists[i];
        const std::optional<qsizetype> index = matchIndexOfBase(baseNames.at(i), keys);
        playlist.existingRockboxFile = index ? std::optional(files.at(*index)) : std::nullopt;
    }
}

} // namespace kestrune
