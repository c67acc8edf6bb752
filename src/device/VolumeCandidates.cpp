#include "VolumeCandidates.h"

#include "MountTable.h"

#include <QDir>
#include <QStorageInfo>

namespace kestrune {

CandidateSource entriesOfFolder(const QString &folder)
{
    return [folder]() -> std::optional<QStringList> {
        const QDir dir(folder);
        if (!dir.exists() || !dir.isReadable())
            return std::nullopt;
        QStringList paths;
        for (const QString &name : dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::NoSort))
            paths.append(dir.filePath(name));
        return paths;
    };
}

CandidateSource systemCandidateSource()
{
#if defined(Q_OS_MACOS)
    return entriesOfFolder(QStringLiteral("/Volumes"));
#elif defined(Q_OS_LINUX)
    // The volumes a person sees, as the mount watcher follows them: no pseudo or system file systems.
    return []() -> std::optional<QStringList> {
        QStringList roots;
        for (const MountEntry &mount : systemMountTable()) {
            if (isUserVisibleVolume(mount))
                roots.append(mount.mountPoint);
        }
        return roots;
    };
#else
    return []() -> std::optional<QStringList> {
        QStringList roots;
        for (const QStorageInfo &volume : QStorageInfo::mountedVolumes()) {
            if (volume.isValid() && volume.isReady())
                roots.append(volume.rootPath());
        }
        return roots;
    };
#endif
}

} // namespace kestrune
