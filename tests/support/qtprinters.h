#pragma once

#include <ostream>

#include <QByteArray>
#include <QString>
#include <QStringList>

// Readable failure messages for Qt strings in GoogleTest.
QT_BEGIN_NAMESPACE
inline void PrintTo(const QString &s, std::ostream *os) { *os << '"' << s.toStdString() << '"'; }
inline void PrintTo(const QStringList &l, std::ostream *os)
{
    *os << '{';
    for (qsizetype i = 0; i < l.size(); ++i)
        *os << (i ? ", \"" : "\"") << l[i].toStdString() << '"';
    *os << '}';
}
inline void PrintTo(const QByteArray &b, std::ostream *os) { *os << "bytes(" << b.size() << ")"; }
QT_END_NAMESPACE
