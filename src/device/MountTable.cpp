#include "MountTable.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

namespace kestrune {

namespace {

// mountinfo writes space, tab, line feed and backslash in paths as three octal digits after a backslash.
QString unescaped(QByteArrayView field)
{
    QByteArray bytes;
    bytes.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            bool ok = false;
            const int code = field.sliced(i + 1, 3).toByteArray().toInt(&ok, 8);
            if (ok) {
                bytes.append(char(code));
                i += 3;
                continue;
            }
        }
        bytes.append(field[i]);
    }
    return QFile::decodeName(bytes);
}

bool isUnder(const QString &path, const QString &folder)
{
    return path.startsWith(folder) && (path.size() == folder.size() || folder.endsWith(u'/') ||
                                       path.at(folder.size()) == u'/');
}

bool removableInSysfs(const QString &device)
{
    // /dev/sdb1 -> /sys/class/block/sdb1; a partition's flag lives on its disk, one folder up.
    const QString name = QFileInfo(device).fileName();
    const QString block = QStringLiteral("/sys/class/block/") + name;
    for (const QString &flag : {block + QStringLiteral("/removable"), block + QStringLiteral("/../removable")}) {
        QFile file(flag);
        if (file.open(QIODevice::ReadOnly))
            return file.readAll().trimmed() == "1";
    }
    return false;
}

} // namespace

QList<MountEntry> parseMountInfo(const QByteArray &text)
{
    QList<MountEntry> entries;
    for (const QByteArray &line : text.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        // id parent major:minor root mount-point options [optional fields...] - type source super-options
        const qsizetype separator = fields.indexOf("-");
        if (separator < 6 || fields.size() < separator + 3)
            continue;
        MountEntry entry{.source = unescaped(fields.at(separator + 2)),
                         .mountPoint = unescaped(fields.at(4)),
                         .fileSystemType = QString::fromUtf8(fields.at(separator + 1))};
        for (const QByteArray &list : {fields.at(5), fields.value(separator + 3)}) {
            for (const QByteArray &option : list.split(',')) {
                if (!option.isEmpty())
                    entry.options.append(QString::fromUtf8(option));
            }
        }
        entries.append(std::move(entry));
    }
    return entries;
}

QList<MountEntry> systemMountTable()
{
    QFile file(QStringLiteral("/proc/self/mountinfo"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return parseMountInfo(file.readAll());
}

std::optional<MountEntry> mountHolding(const QString &path, const QList<MountEntry> &table)
{
    QFileInfo info(path);
    // A path that does not exist yet (a playlists folder to be made) lies where its nearest parent lies.
    while (!info.exists() && info.absolutePath() != info.absoluteFilePath())
        info = QFileInfo(info.absolutePath());
    const QString real = info.exists() ? info.canonicalFilePath() : info.absoluteFilePath();
    std::optional<MountEntry> best;
    for (const MountEntry &entry : table) {
        // The later of two mounts on one point hides the earlier, so a tie goes to the later line.
        if (isUnder(real, entry.mountPoint) && (!best || entry.mountPoint.size() >= best->mountPoint.size()))
            best = entry;
    }
    return best;
}

bool storesNamesWithoutUtf8(const MountEntry &mount)
{
    if (mount.fileSystemType != QLatin1StringView("vfat") && mount.fileSystemType != QLatin1StringView("msdos"))
        return false;
    return !mount.options.contains(QStringLiteral("utf8")) && !mount.options.contains(QStringLiteral("utf8=1")) &&
           !mount.options.contains(QStringLiteral("iocharset=utf8"));
}

bool isUserVisibleVolume(const MountEntry &mount, const std::function<bool(const QString &)> &isRemovable)
{
    // FUSE file systems of the desktop itself and of containers, never a volume of the user's.
    static const QSet<QString> systemFuse{QStringLiteral("fuse.gvfsd-fuse"), QStringLiteral("fuse.portal"),
                                          QStringLiteral("fuse.lxcfs"), QStringLiteral("fuse.snapfuse"),
                                          QStringLiteral("fuse.xdg-document-portal"), QStringLiteral("fusectl")};
    const QString &type = mount.fileSystemType;
    const bool isFuse = type == QLatin1StringView("fuse") || type == QLatin1StringView("fuseblk") ||
                        type.startsWith(QLatin1StringView("fuse."));
    const bool isBlockDevice = mount.source.startsWith(QLatin1StringView("/dev/")) &&
                               type != QLatin1StringView("squashfs"); // a snap's image
    if (systemFuse.contains(type) || !(isFuse || isBlockDevice))
        return false;
    for (const char *folder : {"/media/", "/run/media/", "/mnt/", "/Volumes/"}) {
        if (isUnder(mount.mountPoint + u'/', QLatin1StringView(folder)))
            return true;
    }
    return isBlockDevice && isRemovable(mount.source);
}

bool isUserVisibleVolume(const MountEntry &mount)
{
    return isUserVisibleVolume(mount, removableInSysfs);
}

} // namespace kestrune
