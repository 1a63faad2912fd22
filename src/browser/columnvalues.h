#pragma once

#include <QLocale>
#include <QString>

#include "common/checked.h"

namespace kv {

// Numbers read back from a file-list row's texts, the way the totals and the statistics read them.
// Each is a Failure when the column is empty or not a number: partial rows stop whoever reads them.

// Column 1 (whole KB) as MB.
double megabytesFromColumn(const QString &sizeKbText);

// Column 3 as kbps; an estimated rate ("~128") counts as its number.
Int32 kbpsFromColumn(const QString &bitrateText);

// A size in MB as shown beside a unit: one decimal, ties to even, in its shortest locale form
// ("10", "1.5", "1,5").
QString megabytesText(double megabytes, const QLocale &locale);

} // namespace kv
