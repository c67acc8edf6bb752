#pragma once

#include <QString>

namespace kestrune {

// The cause of a failed file operation in words a person acts on: "No space left on the device.", a
// read-only volume, a device that is gone. Never "Unknown error".
QString describeSystemError(int errorCode);

} // namespace kestrune
