#pragma once

#include <fstream>
#include <iterator>
#include <string>

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

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
