#include "common/texts.h"

#include "common/checked.h"
#include "common/failure.h"
#include "common/rounding.h"

namespace kv {

namespace {

QString twoDigits(std::int64_t v)
{
    return v < 10 ? QLatin1Char('0') + QString::number(v) : QString::number(v);
}

} // namespace

QString durationText(std::int32_t seconds)
{
    const std::int64_t s = seconds;
    const std::int64_t hours = s / 3600;
    const std::int64_t minutes = s / 60 - hours * 60;
    const std::int64_t secs = s - (minutes * 60 + hours * 3600);
    return QString::number(hours) + QLatin1Char(':') + twoDigits(minutes) + QLatin1Char(':')
           + twoDigits(secs);
}

std::int32_t sizeInKb(std::int64_t bytes)
{
    return Int32::fromReal(static_cast<double>(bytes) / 1024.0);
}

QString shortestNumber(double v, const QLocale &locale)
{
    if (v == 0.0)
        v = 0.0; // no "-0"
    QLocale l = locale;
    l.setNumberOptions(l.numberOptions() | QLocale::OmitGroupSeparator);
    return l.toString(v, 'f', QLocale::FloatingPointShortest);
}

QString commandLineNumber(double v)
{
    return shortestNumber(v, QLocale::c());
}

double numberFromText(const QString &text)
{
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    if (!ok || text.trimmed().isEmpty())
        throw Failure("not a number");
    return v;
}

std::int32_t secondsFromDurationText(const QString &text)
{
    const qsizetype a = text.indexOf(QLatin1Char(':'));
    if (a < 0)
        throw Failure("no colon");
    const qsizetype b = text.indexOf(QLatin1Char(':'), a + 1);
    if (b < 0)
        throw Failure("no second colon");
    const double hours = numberFromText(text.left(a));
    const double minutes = numberFromText(text.mid(a + 1, b - a - 1));
    const Int16 seconds = Int16::fromReal(numberFromText(text.mid(b + 1)));
    return Int32::fromReal(hours * 3600 + minutes * 60 + seconds.value());
}

} // namespace kv
