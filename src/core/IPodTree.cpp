#include "IPodTree.h"

#include <QDir>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#endif

namespace kestrune {

namespace {

enum class Entry { missing, folder, link, other, denied };

Entry entryAt(const QString &path)
{
#ifdef Q_OS_UNIX
    struct stat status {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0)
        return errno == EACCES ? Entry::denied : Entry::missing;
    if (S_ISLNK(status.st_mode))
        return Entry::link;
    return S_ISDIR(status.st_mode) ? Entry::folder : Entry::other;
#else
    const QFileInfo info(path);
    if (info.isSymLink() || info.isShortcut() || info.isJunction())
        return Entry::link;
    if (!info.exists())
        return Entry::missing;
    return info.isDir() ? Entry::folder : Entry::other;
#endif
}

} // namespace

bool holdsIPodControlFolder(const QString &folder)
{
    return entryAt(folder + QStringLiteral("/iPod_Control")) == Entry::folder;
}

bool holdsIPodControlLink(const QString &folder)
{
    return entryAt(folder + QStringLiteral("/iPod_Control")) == Entry::link;
}

std::optional<QString> iPodTreeProblem(const QString &folder)
{
    const QString control = QDir::cleanPath(folder + QStringLiteral("/iPod_Control"));
    switch (entryAt(control)) {
    case Entry::link:
        return QStringLiteral("'%1' is a symbolic link, not the iPod's own folder; a linked iPod_Control is "
                              "refused")
            .arg(control);
    case Entry::denied:
        return QStringLiteral("Permission denied: '%1'").arg(QDir::cleanPath(folder));
    case Entry::folder:
        break;
    case Entry::missing:
    case Entry::other:
        return std::nullopt;
    }
    const QString iTunes = control + QStringLiteral("/iTunes");
    for (const QString &database : {iTunes + QStringLiteral("/iTunesDB"), iTunes + QStringLiteral("/iTunesSD")}) {
        if (entryAt(database) == Entry::denied)
            return QStringLiteral("Permission denied: '%1'").arg(entryAt(iTunes) == Entry::denied ? control : iTunes);
    }
    return std::nullopt;
}

QString withRealParent(const QString &path)
{
    const QFileInfo info(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    if (info.fileName().isEmpty()) // the file system's root
        return info.absoluteFilePath();
    const QString parent = QFileInfo(info.absolutePath()).canonicalFilePath();
    return parent.isEmpty() ? info.absoluteFilePath() : QDir::cleanPath(parent + u'/' + info.fileName());
}

std::optional<QString> enclosingIPodRoot(const QString &path)
{
    QString folder = withRealParent(path);
    for (;;) {
        if (holdsIPodControlFolder(folder))
            return folder;
        const QString parent = QFileInfo(folder).path();
        if (parent == folder || parent.isEmpty())
            return std::nullopt;
        folder = parent;
    }
}

} // namespace kestrune
