#include "ExistingFileMatching.h"

#include "RockboxGenerator.h"

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

std::optional<qsizetype> matchIndex(const QString &playlistName, const QList<FileKeys> &keys)
{
    const QString key = comparable(RockboxGenerator::sanitizeFilename(playlistName));
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
    const std::optional<qsizetype> index = matchIndex(playlistName, keysOf(files));
    return index ? std::optional(files.at(*index)) : std::nullopt;
}

void attachExistingFiles(QList<Playlist> &playlists, const QList<ExistingRockboxFile> &files)
{
    const QList<FileKeys> keys = keysOf(files);
    for (Playlist &playlist : playlists) {
        const std::optional<qsizetype> index = matchIndex(playlist.name, keys);
        playlist.existingRockboxFile = index ? std::optional(files.at(*index)) : std::nullopt;
    }
}

} // namespace kestrune
