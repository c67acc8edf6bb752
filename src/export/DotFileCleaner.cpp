#include "DotFileCleaner.h"

#include "core/IPodTree.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <optional>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace kestrune {

namespace {

bool isRockboxFolderName(const QString &name)
{
    return name.compare(QLatin1StringView(".rockbox"), Qt::CaseInsensitive) == 0;
}

bool isRealFolder(const QFileInfo &entry)
{
    return entry.isDir() && !entry.isSymLink();
}

// The file system an entry lies on, to keep the walk on the root's own; none where it cannot be told.
std::optional<quint64> fileSystemOf(const QString &path)
{
#ifdef Q_OS_UNIX
    struct stat status {};
    if (::lstat(QFile::encodeName(path).constData(), &status) == 0)
        return quint64(status.st_dev);
#else
    Q_UNUSED(path);
#endif
    return std::nullopt;
}

// Depth-first, in the order the system lists each folder: what to remove, without entering what goes whole
// or what belongs to another file system.
void collectDotEntries(const QString &folder, const std::optional<quint64> &rootFileSystem, QStringList &found)
{
    const QFileInfoList entries = QDir(folder).entryInfoList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo &entry : entries) {
        const QString name = entry.fileName();
        if (isRockboxFolderName(name))
            continue;
        if (isRealFolder(entry) && fileSystemOf(entry.filePath()) != rootFileSystem)
            continue; // a mount point: another volume's files are not ours to touch
        if (name.startsWith(u'.'))
            found.append(entry.filePath());
        else if (isRealFolder(entry))
            collectDotEntries(entry.filePath(), rootFileSystem, found);
    }
}

enum class Removal { removed, alreadyGone, failed };

Removal removeEntry(const QString &path)
{
    const QFileInfo entry(path);
    if (!entry.exists() && !entry.isSymLink())
        return Removal::alreadyGone;
    if (isRealFolder(entry))
        return QDir(path).removeRecursively() ? Removal::removed : Removal::failed; // links inside stay links
    return QFile::remove(path) ? Removal::removed : Removal::failed;
}

} // namespace

DotFileCleaner::DotFileCleaner(QString systemCleanerPath) : m_systemCleanerPath(std::move(systemCleanerPath))
{
}

void DotFileCleaner::runSystemCleaner(const QString &root) const
{
    if (m_systemCleanerPath.isEmpty() || !QFileInfo::exists(m_systemCleanerPath))
        return;
    QProcess cleaner;
    cleaner.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    cleaner.setStandardOutputFile(QProcess::nullDevice());
    cleaner.start(m_systemCleanerPath, {QStringLiteral("-m"), root});
    if (cleaner.waitForStarted())
        cleaner.waitForFinished(-1);
}

QStringList DotFileCleaner::find(const QString &root)
{
    QStringList found;
    if (QFileInfo::exists(root) && !isRockboxFolderName(QFileInfo(root).fileName()) && enclosingIPodRoot(root))
        collectDotEntries(root, fileSystemOf(root), found);
    return found;
}

DotFileCleaner::Report DotFileCleaner::clean(const QString &root) const
{
    Report report;
    if (!QFileInfo::exists(root) || isRockboxFolderName(QFileInfo(root).fileName()))
        return report;
    if (!enclosingIPodRoot(root)) {
        report.skippedOutsideIPod = true; // a home folder or a source checkout holds dot files that matter
        return report;
    }
    runSystemCleaner(root);

    for (const QString &path : find(root)) {
        switch (removeEntry(path)) {
        case Removal::removed:
            ++report.removed;
            break;
        case Removal::failed:
            ++report.failed;
            break;
        case Removal::alreadyGone:
            break;
        }
    }
    return report;
}

} // namespace kestrune
