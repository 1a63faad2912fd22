#pragma once

#include <QLocale>
#include <QString>

namespace kv {

class Folders;
struct StatusBar;
struct UiText;

// Writes panel 2: the free space of the file system holding path, in MB to one decimal. A query
// that fails shows 0; counts too large for 32 bits end it silently with the panel unchanged.
void ShowFreeDiskSpace(const QString &path, Folders &folders, StatusBar &status, const UiText &text,
                       const QLocale &locale);

} // namespace kv
