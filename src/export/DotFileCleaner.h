#pragma once

#include <QString>

namespace kestrune {

// Removes hidden entries ("._*", ".DS_Store", ".Trashes" and every other dot name) from a folder tree.
// Rockbox's own ".rockbox" is spared at any depth with everything in it. Symbolic links are never
// followed: a dot-named link is removed as a link, and a link to a folder is not entered.
class DotFileCleaner {
public:
    // The system cleaner run first where it exists (macOS); an empty path skips it.
    explicit DotFileCleaner(QString systemCleanerPath = QStringLiteral("/usr/sbin/dot_clean"));

    // Returns how many items its own pass removed; a removed folder counts once.
    int clean(const QString &root) const;

private:
    void runSystemCleaner(const QString &root) const;

    QString m_systemCleanerPath;
};

} // namespace kestrune
