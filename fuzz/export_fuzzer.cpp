// Builds random playlists and options from the input, exports them into a scratch folder, and reads the
// result back: every file written holds exactly the generated text, lies inside the destination, and
// nothing appears beside it; the listing and the dot-file cleaner agree with what is there.
#include "export/RockboxGenerator.h"

#include <QDir>
#include <QDirIterator>
#include <QHash>
#include <QFile>
#include <QTemporaryDir>

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>

using namespace kestrune;

namespace {

QString text(FuzzedDataProvider &input, size_t maxBytes)
{
    const std::string bytes = input.ConsumeRandomLengthString(maxBytes);
    return QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
}

Playlist playlist(FuzzedDataProvider &input)
{
    Playlist result{.id = QStringLiteral("p"), .name = text(input, 40)};
    const int tracks = input.ConsumeIntegralInRange(0, 6);
    for (int i = 0; i < tracks; ++i) {
        result.tracks.append(Track({.id = input.ConsumeIntegral<quint32>(),
                                    .title = text(input, 30),
                                    .artist = text(input, 20),
                                    .ipodPath = text(input, 40),
                                    .totalTimeMs = input.ConsumeIntegral<quint32>()}));
    }
    return result;
}

QStringList everythingBelow(const QString &root)
{
    QStringList paths;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        paths.append(it.next());
    return paths;
}

void require(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static QTemporaryDir scratch;
    const QString destination = scratch.filePath(QStringLiteral("Playlists"));
    QDir(destination).removeRecursively();
    QDir(scratch.path()).mkdir(QStringLiteral("iPod_Control")); // an iPod tree, so cleaning runs

    FuzzedDataProvider input(data, size);
    const ConversionOptions options{.extendedM3U = input.ConsumeBool(),
                                    .useM3U8Extension = input.ConsumeBool(),
                                    .customPathPrefix = text(input, 12),
                                    .sanitizeFilenames = input.ConsumeBool()};
    const RockboxGenerator generator{DotFileCleaner(QString())};
    QList<Playlist> exported;
    for (int count = input.ConsumeIntegralInRange(1, 4); count > 0; --count)
        exported.append(playlist(input));
    // One run, as the window and the CLI write: a later playlist of the same name replaces an earlier.
    const QList<ExportItemResult> results = generator.exportPlaylists(exported, QUrl::fromLocalFile(destination), options);
    require(results.size() == exported.size());
    QHash<QString, qsizetype> lastWriter;
    for (qsizetype i = 0; i < results.size(); ++i) {
        const ExportItemResult &result = results.at(i);
        require(result.playlistName == exported.at(i).name && result.trackCount == exported.at(i).tracks.size());
        require(result.isSuccess != result.errorMessage.has_value());
        if (result.isSuccess) {
            require(QDir::cleanPath(result.fileURL.toLocalFile()).startsWith(destination + u'/'));
            lastWriter.insert(QFileInfo(result.fileURL.toLocalFile()).canonicalFilePath(), i);
        }
    }
    for (auto it = lastWriter.cbegin(); it != lastWriter.cend(); ++it) {
        QFile file(it.key());
        require(file.open(QIODevice::ReadOnly));
        require(file.readAll() == generator.generateM3UContent(exported.at(it.value()), options).toUtf8());
    }

    // Nothing beside the destination, and no temporary file left in it.
    for (const QString &path : everythingBelow(scratch.path())) {
        require(path == destination || path.startsWith(destination + u'/') ||
                path == scratch.filePath(QStringLiteral("iPod_Control")));
    }
    for (const QString &path : everythingBelow(destination))
        require(!QFileInfo(path).fileName().startsWith(QStringLiteral(".kestrune-")));
    // Every listed file exists; cleaning removes only dot names.
    for (const RockboxFileItem &item : generator.listPlaylists(QUrl::fromLocalFile(destination)))
        require(QFileInfo::exists(item.fileURL.toLocalFile()) && !item.name.startsWith(u'.'));
    const qsizetype visibleBefore = generator.listPlaylists(QUrl::fromLocalFile(destination)).size();
    generator.cleanDotFiles(QUrl::fromLocalFile(destination));
    require(generator.listPlaylists(QUrl::fromLocalFile(destination)).size() == visibleBefore);
    return 0;
}
