#include "SystemErrorText.h"

#include <cerrno>

namespace kestrune {

QString describeSystemError(int errorCode)
{
    switch (errorCode) {
    case ENOSPC:
        return QStringLiteral("No space left on the device.");
    case EROFS:
        return QStringLiteral("The device is read-only (read-only file system).");
    case EIO:
        return QStringLiteral("Input/output error: the device failed or was removed.");
    case ENODEV:
    case ENXIO:
    case ENOTCONN:
        return QStringLiteral("The device is no longer available: it was removed or unmounted.");
    case EACCES:
    case EPERM:
        return QStringLiteral("Permission denied.");
#ifdef EDQUOT
    case EDQUOT:
        return QStringLiteral("The disk quota is exceeded.");
#endif
    case ENAMETOOLONG:
        return QStringLiteral("The file name is too long for the device.");
    case 0:
        return QStringLiteral("The operation failed without a reason from the system.");
    default:
        return qt_error_string(errorCode);
    }
}

} // namespace kestrune
