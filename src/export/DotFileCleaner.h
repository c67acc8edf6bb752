#pragma once

#include "DeviceFolder.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace kestrune {

// Removes hidden entries ("._*", ".DS_Store", ".Trashes" and every other dot name) from a folder tree on an
// iPod. Rockbox's own ".rockbox" (any case: FAT is case-blind) is spared at any depth with everything in
// it, and so are the temporary files of a run in progress (PlaylistWriteBatch sweeps up those a dead run
// left). Bounded for safety: a root that lies on no iPod (nothing at or above it holds a real
// "iPod_Control" folder) is left alone; the tree is walked through open folders and links are never
// followed (a dot-named link goes as a link); and no other mount is entered, emptied or removed, a bind
// mount of a folder of the same disk included: each folder's mount is compared with the root's before
// the walk goes in, as "rm --one-file-system" does.
class DotFileCleaner {
public:
    struct Failure {
        QString path;
        QString reason;

        bool operator==(const Failure &) const = default;
    };

    struct Report {
        int removed = 0;              // a removed folder counts once
        QList<Failure> failures;      // entries that could not be removed, each with its reason
        QStringList skippedMounts;    // mount points inside the tree, neither entered nor removed
        bool skippedOutsideIPod = false;
        std::optional<QString> refused; // the root could not be reached safely (a link on the way); nothing done

        bool operator==(const Report &) const = default;
    };

    // Runs the system cleaner "/usr/sbin/dot_clean" first where it exists (macOS).
    DotFileCleaner() : DotFileCleaner(QStringLiteral("/usr/sbin/dot_clean")) {}
    // Another system cleaner; an empty path skips that pass.
    explicit DotFileCleaner(QString systemCleanerPath);

    [[nodiscard]] Report clean(const QString &root) const;
    // The same below a folder the caller already resolved (from the root it holds locked).
    [[nodiscard]] Report clean(const DeviceFolder &root) const;
    // What clean() would remove (its own pass), removing nothing; empty for a root on no iPod.
    [[nodiscard]] static QStringList find(const QString &root);

private:
    void runSystemCleaner(const QString &root) const;

    QString m_systemCleanerPath;
};

} // namespace kestrune
