#include "DotFileCleaner.h"

#include "FileNameText.h"
#include "PlaylistWriteBatch.h"
#include "SystemErrorText.h"
#include "WriteScope.h"
#include "core/IPodTree.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSet>
#include <QStorageInfo>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#endif

namespace kestrune {

namespace {

bool isRockboxFolderName(const QString &name)
{
    return name.compare(QLatin1StringView(".rockbox"), Qt::CaseInsensitive) == 0;
}

// Names the cleaner leaves: Rockbox's folder, and the temporary files of a run that may be in progress.
bool isSpared(const QString &name)
{
    return isRockboxFolderName(name) || PlaylistWriteBatch::isTemporaryFileName(name);
}

} // namespace

#ifdef Q_OS_UNIX

namespace {

// Which mount an entry lies on. The mount id tells a bind mount of a folder of the same disk apart, which
// the device number alone does not; where the system gives no mount id, the mount table's list of mount
// points stands in for it.
struct MountIdentity {
    quint64 device = 0;
    std::optional<quint64> mountId;

    bool operator==(const MountIdentity &) const = default;
};

std::optional<MountIdentity> mountOf(int folder, const QByteArray &name)
{
    const int emptyPath = name.isEmpty() ?
#ifdef AT_EMPTY_PATH
                                         AT_EMPTY_PATH
#else
                                         0
#endif
                                         : 0;
#if defined(Q_OS_LINUX) && defined(STATX_MNT_ID)
    struct statx extended {};
    if (::statx(folder, name.constData(), AT_SYMLINK_NOFOLLOW | emptyPath, STATX_TYPE | STATX_MNT_ID, &extended) == 0) {
        MountIdentity identity{quint64(makedev(extended.stx_dev_major, extended.stx_dev_minor)), std::nullopt};
        if (extended.stx_mask & STATX_MNT_ID)
            identity.mountId = extended.stx_mnt_id;
        return identity;
    }
#endif
    struct stat status {};
    const int result = name.isEmpty() ? ::fstat(folder, &status)
                                      : ::fstatat(folder, name.constData(), &status, AT_SYMLINK_NOFOLLOW | emptyPath);
    if (result != 0)
        return std::nullopt;
    return MountIdentity{quint64(status.st_dev), std::nullopt};
}

// Mount points from the system's mount table, for systems without mount ids.
QSet<QString> mountPointsFromTable()
{
    QSet<QString> points;
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    if (!table.open(QIODevice::ReadOnly))
        return points;
    for (const QByteArray &line : table.readAll().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() < 5)
            continue;
        QByteArray point = fields.at(4); // octal escapes: "\040" for a blank
        for (qsizetype at = point.indexOf('\\'); at >= 0 && at + 3 < point.size(); at = point.indexOf('\\', at + 1))
            point.replace(at, 4, QByteArray(1, char(point.mid(at + 1, 3).toInt(nullptr, 8))));
        points.insert(QFile::decodeName(point));
    }
    return points;
}

// The names in an open folder, read through a handle of their own so that removals do not disturb it.
std::optional<QList<QByteArray>> namesIn(int folder)
{
    const int listing = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR *entries = listing >= 0 ? ::fdopendir(listing) : nullptr;
    if (!entries) {
        if (listing >= 0)
            ::close(listing);
        return std::nullopt;
    }
    QList<QByteArray> names;
    while (const dirent *entry = ::readdir(entries)) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names.append(name);
    }
    ::closedir(entries);
    return names;
}

class TreeWalk {
public:
    TreeWalk(int root, DotFileCleaner::Report &report, QStringList *found)
        : m_report(report), m_found(found)
    {
        m_root = mountOf(root, {});
        if (m_root && !m_root->mountId)
            m_mountPoints = mountPointsFromTable();
    }

    // The dot entries in a folder and, below it, in the folders it shares the root's mount with.
    void visit(int folder, const QString &path)
    {
        const std::optional<QList<QByteArray>> names = namesIn(folder);
        if (!names) {
            fail(path, errno);
            return;
        }
        for (const QByteArray &name : *names) {
            const QString text = displayFileName(name);
            const QString entryPath = path + u'/' + text;
            if (isSpared(text))
                continue;
            struct stat status {};
            if (::fstatat(folder, name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
                continue; // gone meanwhile
            const bool isFolder = S_ISDIR(status.st_mode);
            if (isFolder && !onRootMount(folder, name, entryPath))
                continue;
            if (text.startsWith(u'.')) {
                if (m_found)
                    m_found->append(entryPath);
                else if (isFolder ? removeTree(folder, name, entryPath) : removeFile(folder, name, entryPath))
                    ++m_report.removed;
            } else if (isFolder) {
                withFolder(folder, name, entryPath, [this, &entryPath](int child) { visit(child, entryPath); });
            }
        }
    }

private:
    DotFileCleaner::Report &m_report;
    QStringList *m_found; // when only finding
    std::optional<MountIdentity> m_root;
    QSet<QString> m_mountPoints;

    void fail(const QString &path, int error)
    {
        m_report.failures.append(DotFileCleaner::Failure{path, describeSystemError(error)});
    }

    bool onRootMount(int folder, const QByteArray &name, const QString &path)
    {
        const std::optional<MountIdentity> mount = mountOf(folder, name);
        const bool same = mount && m_root && *mount == *m_root && !m_mountPoints.contains(path);
        if (!same)
            m_report.skippedMounts.append(path);
        return same;
    }

    template<typename Use>
    bool withFolder(int parent, const QByteArray &name, const QString &path, const Use &use)
    {
        const int child = ::openat(parent, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (child < 0) {
            fail(path, errno);
            return false;
        }
        use(child);
        ::close(child);
        return true;
    }

    // Whether the entry is gone (removed, or already gone meanwhile).
    bool removeFile(int folder, const QByteArray &name, const QString &path)
    {
        if (::unlinkat(folder, name.constData(), 0) == 0 || errno == ENOENT)
            return true;
        fail(path, errno);
        return false;
    }

    // Empties and removes a folder on the root's mount; what lies on another mount stays, and so does the
    // folder holding it.
    bool removeTree(int parent, const QByteArray &name, const QString &path)
    {
        bool emptied = true;
        const bool opened = withFolder(parent, name, path, [&](int folder) {
            const std::optional<QList<QByteArray>> names = namesIn(folder);
            if (!names) {
                fail(path, errno);
                emptied = false;
                return;
            }
            for (const QByteArray &entry : *names) {
                const QString entryPath = path + u'/' + displayFileName(entry);
                struct stat status {};
                if (::fstatat(folder, entry.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
                    continue;
                const bool removed = S_ISDIR(status.st_mode)
                                         ? onRootMount(folder, entry, entryPath) && removeTree(folder, entry, entryPath)
                                         : removeFile(folder, entry, entryPath);
                emptied = emptied && removed;
            }
        });
        if (!opened || !emptied)
            return false;
        if (::unlinkat(parent, name.constData(), AT_REMOVEDIR) == 0)
            return true;
        fail(path, errno);
        return false;
    }
};

void walkTree(const DeviceFolder &root, DotFileCleaner::Report &report, QStringList *found)
{
    TreeWalk(root.descriptor(), report, found).visit(root.descriptor(), root.path());
}

} // namespace

#else

namespace {

bool isRealFolder(const QFileInfo &entry)
{
    return entry.isDir() && !entry.isSymLink() && !entry.isJunction();
}

// Elsewhere the walk goes by path; a mount point inside the tree is told by its volume's root.
void walkTree(const QString &folder, const QString &rootVolume, DotFileCleaner::Report &report, QStringList *found)
{
    const QFileInfoList entries = QDir(folder).entryInfoList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo &entry : entries) {
        const QString name = entry.fileName();
        if (isSpared(name))
            continue;
        if (isRealFolder(entry) && QStorageInfo(entry.filePath()).rootPath() != rootVolume) {
            report.skippedMounts.append(entry.filePath());
            continue;
        }
        if (name.startsWith(u'.')) {
            if (found) {
                found->append(entry.filePath());
                continue;
            }
            const bool removed = isRealFolder(entry) ? QDir(entry.filePath()).removeRecursively()
                                                     : QFile::remove(entry.filePath());
            if (removed)
                ++report.removed;
            else
                report.failures.append({entry.filePath(), QStringLiteral("It could not be removed.")});
        } else if (isRealFolder(entry)) {
            walkTree(entry.filePath(), rootVolume, report, found);
        }
    }
}

void walkTree(const DeviceFolder &root, DotFileCleaner::Report &report, QStringList *found)
{
    walkTree(root.path(), QStorageInfo(root.path()).rootPath(), report, found);
}

} // namespace

#endif

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

namespace {

// The root resolved from the iPod's own root without following links; none, with the report saying why,
// when it is not to be cleaned.
std::optional<DeviceFolder> cleanableRoot(const QString &root, DotFileCleaner::Report &report)
{
    const QFileInfo info(root);
    if ((!info.exists() && !info.isSymLink()) || isRockboxFolderName(info.fileName()))
        return std::nullopt;
    if (!enclosingIPodRoot(root)) {
        report.skippedOutsideIPod = true; // a home folder or a source checkout holds dot files that matter
        return std::nullopt;
    }
    DeviceFolder folder = writeScopeFor(root, false).destination(false);
    if (!folder.isOpen()) {
        report.refused = folder.error();
        return std::nullopt;
    }
    return folder;
}

} // namespace

QStringList DotFileCleaner::find(const QString &root)
{
    Report report;
    QStringList found;
    if (const std::optional<DeviceFolder> folder = cleanableRoot(root, report))
        walkTree(*folder, report, &found);
    return found;
}

DotFileCleaner::Report DotFileCleaner::clean(const QString &root) const
{
    Report report;
    if (const std::optional<DeviceFolder> folder = cleanableRoot(root, report)) {
        runSystemCleaner(folder->path());
        walkTree(*folder, report, nullptr);
    }
    return report;
}

DotFileCleaner::Report DotFileCleaner::clean(const DeviceFolder &root) const
{
    Report report;
    if (!root.isOpen()) {
        report.refused = root.error();
        return report;
    }
    if (isRockboxFolderName(QFileInfo(root.path()).fileName()))
        return report;
    if (!enclosingIPodRoot(root.path())) {
        report.skippedOutsideIPod = true;
        return report;
    }
    runSystemCleaner(root.path());
    walkTree(root, report, nullptr);
    return report;
}

} // namespace kestrune
