#include "IPodDevice.h"

#include <QLocale>

namespace kestrune {

QString formattedByteCount(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 2, QLocale::DataSizeSIFormat);
}

std::optional<QString> IPodDevice::formattedFreeSpace() const
{
    return freeDiskSpace ? std::optional(formattedByteCount(*freeDiskSpace)) : std::nullopt;
}

std::optional<QString> IPodDevice::formattedTotalSpace() const
{
    return totalDiskSpace ? std::optional(formattedByteCount(*totalDiskSpace)) : std::nullopt;
}

size_t qHash(const IPodDevice &device, size_t seed) noexcept
{
    return qHashMulti(seed, device.id, device.name, device.mountURL, device.itunesDBURL, device.playlistsURL,
                      device.totalDiskSpace.value_or(-1), device.freeDiskSpace.value_or(-1));
}

} // namespace kestrune
