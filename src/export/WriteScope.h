#pragma once

#include "DeviceFolder.h"

#include <QString>

namespace kestrune {

// Where a run may write and remove: a root found once by its path, and the destination below it. On an
// iPod the root is the iPod's own (the nearest folder at or above the destination holding a real
// iPod_Control folder), so that every run on one device locks the same folder; elsewhere the root is the
// destination itself. Nothing the run touches lies outside the root, and nothing below it is reached
// through a link.
struct WriteScope {
    DeviceFolder root;      // not open when the destination cannot be reached; root.error() says why
    QString relativeFolder; // the destination below the root; empty when the root is the destination
    bool onIPod = false;

    // The destination, opened from the root; `create` makes it when missing (only its last component).
    [[nodiscard]] DeviceFolder destination(bool create) const { return root.openFolder(relativeFolder, create); }
};

// The scope of a destination folder. Outside an iPod the destination is made when missing and `create` is
// set (its parent must exist); without `create` a missing destination leaves the root not open.
[[nodiscard]] WriteScope writeScopeFor(const QString &destination, bool create);

} // namespace kestrune
