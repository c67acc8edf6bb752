#include "WriteScope.h"

#include "core/IPodTree.h"

#include <QDir>
#include <QFileInfo>

namespace kestrune {

WriteScope writeScopeFor(const QString &destination, bool create)
{
    const QString real = withRealParent(destination);
    // A linked iPod_Control on the way up would have lent the folder an iPod's rules: refused, not skipped.
    for (QString folder = real;; folder = QFileInfo(folder).path()) {
        if (holdsIPodControlFolder(folder))
            break;
        if (holdsIPodControlLink(folder))
            return WriteScope{DeviceFolder::refused(folder, *iPodTreeProblem(folder)), QString(), false};
        if (QFileInfo(folder).path() == folder)
            break;
    }
    if (const std::optional<QString> iPodRoot = enclosingIPodRoot(real)) {
        if (real == *iPodRoot)
            return WriteScope{DeviceFolder::open(real), QString(), true};
        const QString prefix = iPodRoot->endsWith(u'/') ? *iPodRoot : *iPodRoot + u'/';
        Q_ASSERT(real.startsWith(prefix));
        return WriteScope{DeviceFolder::open(*iPodRoot), real.mid(prefix.size()), true};
    }
    const QFileInfo info(real);
    if (info.fileName().isEmpty()) // the file system's root
        return WriteScope{DeviceFolder::open(real), QString(), false};
    return WriteScope{DeviceFolder::open(info.absolutePath()).openFolder(info.fileName(), create), QString(), false};
}

} // namespace kestrune
