#pragma once

// A reviewed record of what the program shows, under tests/data/recorded. A change made on purpose
// is recorded again with KV_RECORD=1 and reviewed as the record's diff; any other change to a text,
// a place or a state fails the test that compares.
#include <algorithm>

#include <QFile>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace kv::test {

inline void expectAsRecorded(const QString &name, QStringList lines, const QString &temporary = {})
{
    if (!temporary.isEmpty())
        lines.replaceInStrings(temporary, QStringLiteral("<tmp>"));
    QFile file(QStringLiteral(KV_TEST_DATA_DIR "/recorded/") + name + QStringLiteral(".txt"));
    if (qEnvironmentVariableIsSet("KV_RECORD")) {
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write((lines.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8());
        return;
    }
    const QStringList expected = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split(QLatin1Char('\n')) : QStringList();
    lines.append(QString()); // the record ends with a newline
    for (qsizetype i = 0; i < std::max(lines.size(), expected.size()); ++i)
        ASSERT_EQ(lines.value(i, QStringLiteral("(end)")), expected.value(i, QStringLiteral("(end)")))
            << name.toStdString() << ".txt line " << i + 1 << "; after a change made on purpose, run again with KV_RECORD=1 "
            << "and review the record's diff";
}

} // namespace kv::test
