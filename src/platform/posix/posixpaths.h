#pragma once

#include <QString>

namespace kv {

enum class PathKind { Missing, Folder, Other };

// What a path names, links followed; the path goes to the system byte for byte.
PathKind pathKind(const QString &path);

// path made absolute against the working folder and cleaned ("/a/./b/../c" -> "/a/c"), without
// a trip through the locale's codec, so undecodable bytes in either part survive.
QString absolutePath(const QString &path);

// The folder that a path given on the command line opens: a folder (or a missing path, of which
// the tree opens the part that exists) itself; anything else the folder that holds it, "/" for one
// directly in it.
QString folderToOpen(const QString &absolute, PathKind kind);

// Whether this user may create files in folder; the path goes to the system byte for byte.
bool isWritableFolder(const QString &folder);

// Folder of the running executable, ending in "/"; empty when the system does not tell.
QString executableFolder();

} // namespace kv
