#include "IPodTree.h"

#include <QDir>
#include <QFileInfo>

namespace kestrune {

std::optional<QString> enclosingIPodRoot(const QString &path)
{
    const QFileInfo info(path);
    // Through links to where the files really are, so that a link cannot lend a folder an iPod.
    QString folder = info.exists() ? info.canonicalFilePath() : QDir::cleanPath(info.absoluteFilePath());
    for (;;) {
        if (QFileInfo(folder + QStringLiteral("/iPod_Control")).isDir())
            return folder;
        const QString parent = QFileInfo(folder).path();
        if (parent == folder || parent.isEmpty())
            return std::nullopt;
        folder = parent;
    }
}

} // namespace kestrune
