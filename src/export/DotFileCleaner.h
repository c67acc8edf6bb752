#pragma once

#include <QString>
#include <QStringList>

namespace kestrune {

// Removes hidden entries ("._*", ".DS_Store", ".Trashes" and every other dot name) from a folder tree on an
// iPod. Rockbox's own ".rockbox" (any case: FAT is case-blind) is spared at any depth with everything in
// it. Bounded for safety: a root that lies on no iPod (nothing at or above it holds "iPod_Control") is
// left alone, symbolic links are never followed (a dot-named link goes as a link), and the walk never
// enters nor removes another file system mounted inside the tree.
class DotFileCleaner {
public:
    struct Report {
        int removed = 0; // a removed folder counts once
        int failed = 0;  // entries that could not be removed
        bool skippedOutsideIPod = false;

        bool operator==(const Report &) const = default;
    };

    // Runs the system cleaner "/usr/sbin/dot_clean" first where it exists (macOS).
    DotFileCleaner() : DotFileCleaner(QStringLiteral("/usr/sbin/dot_clean")) {}
    // Another system cleaner; an empty path skips that pass.
    explicit DotFileCleaner(QString systemCleanerPath);

    [[nodiscard]] Report clean(const QString &root) const;
    // What clean() would remove (its own pass), removing nothing; empty for a root on no iPod.
    [[nodiscard]] static QStringList find(const QString &root);

private:
    void runSystemCleaner(const QString &root) const;

    QString m_systemCleanerPath;
};

} // namespace kestrune
