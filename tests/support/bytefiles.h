#pragma once

#include <fstream>
#include <iterator>
#include <string>

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// Files reached by their byte paths, so that names that are not valid UTF-8 work as they are and
// the code under test is not what puts them there.
inline void writeFile(const QByteArray &path, const QByteArray &data)
{
    std::ofstream(path.constData(), std::ios::binary) << data.toStdString();
}

inline std::string readFile(const QByteArray &path)
{
    std::ifstream file(path.constData(), std::ios::binary);
    return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "<missing>";
}

// Without links, as the code under test records it.
inline QByteArray bytePath(const QTemporaryDir &dir) { return QFile::encodeName(QFileInfo(dir.path()).canonicalFilePath()); }

inline QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

inline void write(const QString &path, const QByteArray &data)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(data) == data.size()) << path.toStdString();
}
