#pragma once

#include <QString>

#include <optional>

namespace kestrune {

// Whether the folder holds a real "iPod_Control" folder. A link of that name never counts: it would lend
// any folder (a home folder, say) an iPod's cleaning and writing rules.
bool holdsIPodControlFolder(const QString &folder);

// Whether the folder holds a link named "iPod_Control" (refused wherever a device is recognised).
bool holdsIPodControlLink(const QString &folder);

// Why the folder cannot be used as an iPod although it looks like one: its "iPod_Control" is a link, or
// the system refuses to show what is inside. None when it is a usable iPod tree or simply not one.
std::optional<QString> iPodTreeProblem(const QString &folder);

// The path with the links of the folders above it resolved, once; the last component is kept as it is,
// so that a link there is seen as a link, never as the folder it points at.
QString withRealParent(const QString &path);

// The root of the iPod tree a path lies in (taken withRealParent): the path itself or the nearest folder
// above it that holds a real "iPod_Control" folder. None when the path is not on an iPod (or a copy of
// one).
std::optional<QString> enclosingIPodRoot(const QString &path);

} // namespace kestrune
