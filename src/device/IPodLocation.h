#pragma once

#include "IPodDevice.h"
#include "VolumeInfo.h"

#include <QUrl>

#include <optional>

namespace kestrune {

// A folder is an iPod location when it holds iPod_Control/iTunes/iTunesDB, or else
// iPod_Control/iTunes/iTunesSD, below a real iPod_Control folder (never a link). Returns the device
// described by that folder, or none; iPodTreeProblem() (core/IPodTree.h) says why a folder that looks
// like an iPod is refused.
std::optional<IPodDevice> inspectIPodLocation(const QUrl &folderURL,
                                              const VolumeInfoReader &volumeInfo = systemVolumeInfo);

} // namespace kestrune
