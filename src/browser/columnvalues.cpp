#include "browser/columnvalues.h"

#include "common/rounding.h"
#include "common/texts.h"

namespace kv {

double megabytesFromColumn(const QString &sizeKbText)
{
    return numberFromText(sizeKbText) / 1024.0;
}

Int32 kbpsFromColumn(const QString &bitrateText)
{
    const QString number = bitrateText.startsWith(QLatin1Char('~')) ? bitrateText.mid(1) : bitrateText;
    return Int32::fromReal(numberFromText(number));
}

QString megabytesText(double megabytes, const QLocale &locale)
{
    return shortestNumber(roundHalfEven(megabytes, 1), locale);
}

} // namespace kv
