#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace kv {

// File names on Linux are byte strings, and old collections hold Windows-1251 or Latin-1 names
// that are not valid UTF-8. Every name crosses the platform boundary through these two, so a
// name read from a folder (or from the command line) reaches the same file again.

// Valid UTF-8 decodes as usual; each byte that is not part of a valid sequence becomes the lone
// surrogate U+DC80 + (byte - 0x80), which no valid UTF-8 can produce.
QString nameFromBytes(QByteArrayView bytes);

// The exact inverse of nameFromBytes for every byte string. Any other text encodes as UTF-8; a
// lone surrogate outside the escapes becomes "?".
QByteArray bytesFromName(const QString &name);

// The name as a person reads it: each undecodable byte shows as U+FFFD.
QString shownName(const QString &name);

} // namespace kv
