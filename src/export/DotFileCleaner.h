#pragma once

#include <QString>

namespace kestrune {

// Removes hidden entries ("._*", ".DS_Store", ".Trashes" and every other dot name) from a folder tree.
// Rockbox's own ".rockbox" is spared at any depth with everything in it. Symbolic links are never
// followed: a dot-named link is removed as a link, and a link to a folder is not entered.
class DotFileCleaner {
public:
    // Runs the system cleaner "/usr/sbin/dot_clean" first where it exists (macOS).
    DotFileCleaner() : DotFileCleaner(QStringLiteral("/usr/sbin/dot_clean")) {}
    // Another system cleaner; an empty path skips that pass.
    explicit DotFileCleaner(QString systemCleanerPath);

    // Returns how many items its own pass removed; a removed folder counts once.
    int clean(const QString &root) const;

private:
    void runSystemCleaner(const QString &root) const;

    QString m_systemCleanerPath;
};

} // namespace kestrune
