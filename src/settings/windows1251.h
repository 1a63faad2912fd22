#pragma once

#include <QByteArray>
#include <QString>

namespace kv {

// The configuration file's texts are Windows-1251 on every platform, so a file moves between
// machines and both interface languages fit in one byte per character.
QByteArray toWindows1251(const QString &text); // a character outside the code page becomes "?"
QString fromWindows1251(const QByteArray &bytes);

} // namespace kv
