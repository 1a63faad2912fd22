#pragma once

// What the window's tests share: a program folder of codec entries, a drive list of one
// temporary folder, and the window's controls found by their object names.
#include <gtest/gtest.h>

#include <QAction>
#include <QDir>
#include <QFile>
#include <QWidget>

#include "platform/volumes.h"

namespace kv::test {

inline void write(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    f.open(QIODevice::WriteOnly);
    f.write(bytes);
}

inline QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Every codec entry of the program folder is this script, executable.
inline void installCodecs(const QString &program, const QByteArray &script)
{
    QDir().mkpath(program + QStringLiteral("codec"));
    for (const char *codec : {"lame", "madplay", "mppenc", "mppdec", "oggenc2", "oggdec"}) {
        const QString entry = program + QStringLiteral("codec/") + QLatin1String(codec);
        write(entry, script);
        QFile::setPermissions(entry, QFile::permissions(entry) | QFile::ExeOwner);
    }
}

// The temporary folder alone, plus drives plugged in during a test: the tree never wanders
// over the machine.
struct OneDrive : Volumes
{
    QString root;
    std::vector<Volume> plugged;
    std::vector<Volume> mounted() override
    {
        std::vector<Volume> all{Volume{root, QStringLiteral("ext4")}};
        all.insert(all.end(), plugged.begin(), plugged.end());
        return all;
    }
};

template <typename T = QWidget>
T *child(const QWidget &window, const QString &name)
{
    T *found = window.findChild<T *>(name);
    EXPECT_NE(found, nullptr) << name.toStdString();
    return found;
}

inline QAction *toolbar(const QWidget &window, int position)
{
    return child<QAction>(window, QStringLiteral("tbMain_%1").arg(position));
}

} // namespace kv::test
