#pragma once

#include <cstdint>

#include <QLocale>
#include <QString>

namespace kv {

// H:MM:SS with unpadded hours (0 -> "0:00:00", 3725 -> "1:02:05", 36000 -> "10:00:00").
QString durationText(std::int32_t seconds);

// Whole kilobytes of a byte count: bytes / 1024, rounded half to even (1536 -> 2, 2560 -> 2).
std::int32_t sizeInKb(std::int64_t bytes);

// The shortest decimal text of a real number in the given locale, without digit grouping
// (6 -> "6", 4.5 -> "4.5" or "4,5").
QString shortestNumber(double v, const QLocale &locale);

// The shortest decimal text of a real number as the codecs read it: ASCII digits, "-" and ".",
// whatever the user's locale (the codecs run in the C locale).
QString commandLineNumber(double v);

// A column text read back as a number, the way the window's code reads its own rows: blanks
// around it are allowed, anything else that is not a number is a Failure.
double numberFromText(const QString &text);

// Parses an H:MM:SS column into seconds: hours and minutes as numbers, seconds as a signed
// 16-bit value; a text without two colons or with a non-number part is a Failure.
std::int32_t secondsFromDurationText(const QString &text);

} // namespace kv
