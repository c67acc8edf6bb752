#include "DotFileCleaner.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

namespace kestrune {

namespace {

const QLatin1StringView rockboxFolderName(".rockbox");

bool isRealFolder(const QFileInfo &entry)
{
    return entry.isDir() && !entry.isSymLink();
}

// Depth-first, in the order the system lists each folder: what to remove, without entering what goes whole.
void collectDotEntries(const QString &folder, QStringList &found)
{
    const QFileInfoList entries = QDir(folder).entryInfoList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo &entry : entries) {
        const QString name = entry.fileName();
        if (name == rockboxFolderName)
            continue;
        if (name.startsWith(u'.'))
            found.append(entry.filePath());
        else if (isRealFolder(entry))
            collectDotEntries(entry.filePath(), found);
    }
}

bool removeEntry(const QString &path)
{
    const QFileInfo entry(path);
    if (!entry.exists() && !entry.isSymLink())
        return false; // already gone
    if (isRealFolder(entry))
        return QDir(path).removeRecursively(); // does not follow links inside
    return QFile::remove(path);
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

int DotFileCleaner::clean(const QString &root) const
{
    if (!QFileInfo::exists(root) || QFileInfo(root).fileName() == rockboxFolderName)
        return 0;
    runSystemCleaner(root);

    QStringList found;
    collectDotEntries(root, found);
    int removed = 0;
    for (const QString &path : std::as_const(found)) {
        if (removeEntry(path))
            ++removed;
    }
    return removed;
}

} // namespace kestrune
