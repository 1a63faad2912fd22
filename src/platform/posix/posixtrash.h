#pragma once

#include <optional>

#include <QByteArray>

namespace kv {

// The freedesktop.org Trash, on byte paths: a name that is not valid UTF-8 reaches the trash with
// its exact bytes, and nothing here depends on the working folder.

// The home trash the environment names: $XDG_DATA_HOME/Trash, else ~/.local/share/Trash; empty
// when no absolute home is known.
QByteArray homeTrashFolder();

// This user's trash at the top of a volume, created when missing: $topdir/.Trash/$uid when
// $topdir/.Trash is a sticky folder (not a link), else $topdir/.Trash-$uid. Nothing when neither
// is a folder of ours.
std::optional<QByteArray> volumeTrashFolder(const QByteArray &topdir);

// Moves a file (or link) into the home trash when it lies on the home trash's device, else into
// the trash at the top of its volume, with its record in info/. Returns its new path in files/;
// nothing when no trash took it, the file then left where it was.
std::optional<QByteArray> moveToDesktopTrash(const QByteArray &path, const QByteArray &homeTrash);

} // namespace kv
