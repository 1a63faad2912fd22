#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include "engine/commandline.h"
#include "platform/posix/posixprocesses.h"
#include "support/qtprinters.h"

using namespace kv;
using namespace Qt::StringLiterals;

// The encoders run with real files in the convert command's test; the Musepack decoder, as a job
// runs it (no environment), only here.
TEST(CodecFolder, BuiltDecoderConvertsAnAwkwardNameWithNoEnvironment)
{
    QTemporaryDir dir;
    const QString base = dir.path() + u"/-it's $HOME `id` ёж --priority 3"_s;
    ASSERT_TRUE(QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/mpc/stereo-44100.mpc"), base + u".mpc"_s));
    const JobPaths paths{base + u".mpc"_s, base + u".mpc.wav"_s};
    PosixProcesses p;
    const auto h = p.start(buildCommandLine(QStringLiteral(KV_BIN_DIR "/"), u"mppdec"_s, QString(), paths), ChildEnvironment::Empty);
    ASSERT_TRUE(h.has_value());
    for (int i = 0; i < 3000 && !p.hasEnded(*h); ++i)
        QThread::msleep(5);
    QFile target(paths.target);
    EXPECT_TRUE(target.open(QIODevice::ReadOnly) && target.read(4) == "RIFF");
    // Nothing beside: the decoder wrote no file of its own choosing.
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files).size(), 2);
}
