#include "PlaylistFolder.h"

#include "FileNameOrder.h"
#include "FileNameText.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

#ifdef Q_OS_UNIX
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace kestrune {

namespace {

// One entry of the folder as the listing needs it; a name that is not valid UTF-8 keeps its bytes.
struct Entry {
    QString name;
    QByteArray nameBytes; // only when the name is not valid UTF-8
    std::optional<qint64> sizeBytes;
    std::optional<QDateTime> modificationDate;
};

bool hasPlaylistExtension(const QString &name)
{
    const QString extension = QFileInfo(name).suffix().toLower();
    return extension == QLatin1StringView("m3u") || extension == QLatin1StringView("m3u8");
}

#ifdef Q_OS_UNIX

// Read with the system's own calls, so that a name that is not valid UTF-8 is listed too, by its bytes.
QList<Entry> playlistEntriesOf(const QString &folder)
{
    QList<Entry> entries;
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR *listing = descriptor >= 0 ? ::fdopendir(descriptor) : nullptr;
    if (!listing) {
        if (descriptor >= 0)
            ::close(descriptor);
        return entries;
    }
    while (const dirent *entry = ::readdir(listing)) {
        const QByteArray bytes(entry->d_name);
        if (bytes.startsWith('.')) // hidden, as "." and ".." are
            continue;
        const bool utf8 = isValidUtf8(bytes);
        Entry item{utf8 ? QString::fromUtf8(bytes) : displayFileName(bytes), utf8 ? QByteArray() : bytes, {}, {}};
        if (!hasPlaylistExtension(item.name))
            continue;
        struct stat status {};
        if (::fstatat(descriptor, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
            if (S_ISDIR(status.st_mode))
                continue;
            // A link is listed as the system lists it: its target's size and date, when it has one.
            struct stat target {};
            const struct stat &shown =
                S_ISLNK(status.st_mode) && ::fstatat(descriptor, entry->d_name, &target, 0) == 0 ? target : status;
            if (!S_ISLNK(shown.st_mode)) {
                item.sizeBytes = qint64(shown.st_size);
                item.modificationDate = QDateTime::fromSecsSinceEpoch(shown.st_mtim.tv_sec).addMSecs(shown.st_mtim.tv_nsec / 1000000);
            }
        }
        entries.append(std::move(item));
    }
    ::closedir(listing);
    return entries;
}

#else

QList<Entry> playlistEntriesOf(const QString &folder)
{
    QList<Entry> entries;
    // Without QDir::Hidden, every name starting with "." is left out.
    const QFileInfoList all = QDir(folder).entryInfoList(
        QDir::Files | QDir::Dirs | QDir::System | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo &info : all) {
        if ((info.isDir() && !info.isSymLink()) || !hasPlaylistExtension(info.fileName()))
            continue;
        const QDateTime date = info.lastModified();
        entries.append(Entry{info.fileName(), {}, info.exists() ? std::optional(info.size()) : std::nullopt,
                             date.isValid() ? std::optional(date) : std::nullopt});
    }
    return entries;
}

#endif

QList<Entry> playlistEntries(const QString &folder)
{
    QList<Entry> entries = playlistEntriesOf(folder);
    const FileNameOrder order;
    std::stable_sort(entries.begin(), entries.end(),
                     [&order](const Entry &a, const Entry &b) { return order.lessThan(a.name, b.name); });
    return entries;
}

QString baseNameOf(const QString &name)
{
    return name.left(name.lastIndexOf(u'.'));
}

} // namespace

QList<RockboxFileItem> listPlaylistFiles(const QString &folder)
{
    QList<RockboxFileItem> items;
    for (const Entry &entry : playlistEntries(folder)) {
        items.append(RockboxFileItem{
            .name = entry.name,
            .baseName = baseNameOf(entry.name),
            .fileURL = QUrl::fromLocalFile(folder + u'/' + entry.name),
            .sizeBytes = entry.sizeBytes,
            .modificationDate = entry.modificationDate,
            .nameBytes = entry.nameBytes,
        });
    }
    return items;
}

QList<ExistingRockboxFile> scanExistingPlaylistFiles(const QString &folder)
{
    QList<ExistingRockboxFile> files;
    for (const Entry &entry : playlistEntries(folder)) {
        files.append(ExistingRockboxFile{
            .filename = entry.name,
            .baseName = baseNameOf(entry.name),
            .fileURL = QUrl::fromLocalFile(folder + u'/' + entry.name),
            .modificationDate = entry.modificationDate,
        });
    }
    return files;
}

} // namespace kestrune
