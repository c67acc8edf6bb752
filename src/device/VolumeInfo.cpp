#include "VolumeInfo.h"

#include <QStorageInfo>

namespace kestrune {

VolumeInfo systemVolumeInfo(const QString &path)
{
    const QStorageInfo storage(path);
    if (!storage.isValid() || !storage.isReady())
        return {};
    VolumeInfo info;
    if (const QString label = storage.name(); !label.isEmpty())
        info.name = label;
    if (const qint64 total = storage.bytesTotal(); total >= 0)
        info.totalBytes = total;
    if (const qint64 available = storage.bytesAvailable(); available >= 0)
        info.availableBytes = available;
    return info;
}

} // namespace kestrune
