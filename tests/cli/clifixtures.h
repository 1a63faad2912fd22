#pragma once

// Files and program copies that several CLI tests set up alike.

#include <optional>

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include "clirunner.h"

inline QByteArray bytes(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

inline void write(const QString &path, const QByteArray &data)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(data) == data.size()) << path.toStdString();
}

// A 440 Hz sine, 16-bit stereo, made by sox.
inline void makeWav(const QString &path, const char *rate = "-r44100", const char *seconds = "1")
{
    ASSERT_EQ(QProcess::execute(QStringLiteral("/usr/bin/sox"),
                                {QStringLiteral("-n"), QLatin1String(rate), QStringLiteral("-c2"), QStringLiteral("-b16"), path,
                                 QStringLiteral("synth"), QLatin1String(seconds), QStringLiteral("sine"), QStringLiteral("440")}),
              0);
}

// A PCM header with the fields the reader looks at, then zeros up to length bytes.
inline void writeWav(const QString &path, quint32 rate, char channels, qint64 length, const char *riff = "RIFF")
{
    QByteArray b = QByteArray(riff) + QByteArrayLiteral("\0\0\0\0WAVEfmt \x10\0\0\0\x01\0") + QByteArray(length - 22, '\0');
    b[22] = channels;
    for (int i = 0; i < 4; ++i)
        b[24 + i] = static_cast<char>(rate >> (8 * i));
    write(path, b);
}

// A configuration record of zeros (the smallest settings, English) with some bytes set: {offset, value}.
inline QByteArray record(std::initializer_list<std::pair<int, int>> set)
{
    QByteArray r(10310, '\0');
    for (const auto &[at, value] : set)
        r[at] = static_cast<char>(value);
    return r;
}

// A copy of the binary beside a copy of the codec folder, in which codecs may be replaced, with a
// desktop trash of its own and, when a language is given, a configuration record holding it.
struct ProgramCopy
{
    QTemporaryDir dir;

    explicit ProgramCopy(std::optional<char> language = std::nullopt)
    {
        QFile::copy(cliPath(), path());
        QDir().mkpath(dir.filePath(QStringLiteral("codec")));
        for (const char *name : {"lame", "madplay", "mppenc", "mppdec", "oggenc2", "oggdec"})
            QFile::copy(QStringLiteral(KV_BIN_DIR "/codec/") + QLatin1String(name), codec(name));
        if (language)
            write(dir.filePath(QStringLiteral("kestrvan.cfg")), record({{1, *language}}));
    }
    QString path() const { return dir.filePath(QStringLiteral("kestrelvane-cli")); }
    QString codec(const char *name) const { return dir.filePath(QStringLiteral("codec/") + QLatin1String(name)); }
    QString trash() const { return dir.filePath(QStringLiteral("data/Trash/files/")); }
    // Replaces the MP3 encoder by a shell script (run with no environment: absolute paths only);
    // $t is the target.
    void fakeLame(const QByteArray &script) const
    {
        write(codec("lame"), "#!/bin/sh\nfor a do t=$a; done\n" + script);
        QFile::setPermissions(codec("lame"), QFile::ReadOwner | QFile::ExeOwner);
    }
    // Starts `convert` with args, or the program given with its arguments.
    void start(QProcess &p, const QStringList &args, const QString &program = {}) const
    {
        QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
        e.insert(QStringLiteral("XDG_DATA_HOME"), dir.filePath(QStringLiteral("data")));
        p.setProcessEnvironment(e);
        p.start(program.isEmpty() ? path() : program, program.isEmpty() ? QStringList{QStringLiteral("convert")} + args : args);
        EXPECT_TRUE(p.waitForStarted());
    }
    CliResult convert(const QStringList &args) const
    {
        QProcess p;
        start(p, args);
        EXPECT_TRUE(p.waitForFinished(60000));
        return {QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError()),
                p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1};
    }
};
