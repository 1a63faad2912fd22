#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include "engine/commandline.h"
#include "platform/posix/posixprocesses.h"
#include "support/qtprinters.h"

using namespace kv;
using namespace Qt::StringLiterals;

// Built entries run the way a job runs them: the composed command line, no environment at all.
TEST(CodecFolder, BuiltEntriesConvertAnAwkwardNameWithNoEnvironment)
{
    const QString built = QStringLiteral(KV_BIN_DIR "/");
    QTemporaryDir dir;
    const QString base = dir.path() + u"/-it's $HOME `id` ёж --priority 3"_s;
    ASSERT_EQ(QProcess::execute(u"/usr/bin/sox"_s, {u"-n"_s, u"-r44100"_s, u"-c2"_s, u"-b16"_s, base + u".wav"_s,
                                                    u"synth"_s, u"1"_s, u"sine"_s, u"440"_s}),
              0);

    // The other entries run the same way in the convert command's end-to-end test.
    const struct { const char *codec, *options, *from, *to; QByteArray magic; } entries[] = {
        {"lame", "-V 2 --priority 3 --silent --priority", ".wav", ".mp3", "\xFF"},
        {"mppenc", "--overwrite --silent --insane", ".wav", ".mpc", "MPCK"},
        {"mppdec", "", ".mpc", ".mpc.wav", "RIFF"},
    };
    PosixProcesses p;
    for (const auto &e : entries) {
        const JobPaths paths{base + QLatin1String(e.from), base + QLatin1String(e.to)};
        const auto h = p.start(buildCommandLine(built, QLatin1String(e.codec), QLatin1String(e.options), paths),
                               ChildEnvironment::Empty);
        ASSERT_TRUE(h.has_value()) << e.codec;
        for (int i = 0; i < 3000 && !p.hasEnded(*h); ++i)
            QThread::msleep(5);
        QFile target(paths.target);
        EXPECT_TRUE(target.open(QIODevice::ReadOnly) && target.read(e.magic.size()) == e.magic) << e.codec;
    }
    // Nothing beside the expected files: no decoder wrote a file of its own choosing.
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files).size(), 4);
}
