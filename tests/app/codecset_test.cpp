#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include "app/codecset.h"
#include "engine/commandline.h"
#include "engine/enginefakes.h"
#include "platform/posix/posixfiles.h"
#include "platform/posix/posixprocesses.h"
#include "support/qtprinters.h"

using namespace kv;

TEST(CheckCodecs, OneMessagePerFailedTestInCheckOrder)
{
    const QString folder = QStringLiteral("/opt/kv/");
    const QStringList all = {QStringLiteral("lame"), QStringLiteral("madplay"), QStringLiteral("mppenc"),
                             QStringLiteral("mppdec"), QStringLiteral("oggenc2"), QStringLiteral("oggdec")};
    const struct
    {
        QStringList missing;
        QStringList empty;
        QStringList messages;
    } cases[] = {
        {{}, {}, {}},
        {{QStringLiteral("oggdec")}, {}, {}}, // never looked for at start
        {{QStringLiteral("lame")}, {}, {QStringLiteral("lame"), QStringLiteral("oggdec")}},
        {{QStringLiteral("oggenc2"), QStringLiteral("madplay")}, {QStringLiteral("mppdec")},
         {QStringLiteral("madplay"), QStringLiteral("mppdec"), QStringLiteral("oggenc2")}},
    };
    for (const auto &c : cases) {
        test::FakeFiles files;
        for (const QString &name : all)
            if (!c.missing.contains(name))
                files.sizes[folder + QStringLiteral("codec/") + name] = c.empty.contains(name) ? 0 : 1000;
        QStringList expected;
        for (const QString &name : c.messages)
            expected.append(QStringLiteral("/opt/kv/codec/") + name + QStringLiteral(" not found"));
        EXPECT_EQ(checkCodecs(folder, files), expected);
    }
}

namespace {

const QString built = QStringLiteral(KV_BIN_DIR "/");

QByteArray hashOf(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QCryptographicHash::hash(f.readAll(), QCryptographicHash::Sha256) : QByteArray();
}

QByteArray head(const QString &path, int n)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.read(n) : QByteArray();
}

// Runs a codec entry the way a job does: the designed command line, no environment at all.
bool runEntry(PosixProcesses &p, const QString &codec, const QString &options, const JobPaths &paths)
{
    const auto h = p.start(buildCommandLine(built, codec, options, paths), ChildEnvironment::Empty);
    if (!h)
        return false;
    for (int i = 0; i < 3000 && !p.hasEnded(*h); ++i)
        QThread::msleep(5);
    return p.hasEnded(*h);
}

} // namespace

TEST(CodecFolder, BuiltEntriesPassTheCheckAndConvertAwkwardNamesWithNoEnvironment)
{
    PosixFiles files;
    EXPECT_EQ(checkCodecs(built, files), QStringList());

    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString folder = dir.path() + QLatin1Char('/');
    const QString name = QStringLiteral("-it's $HOME `id` ёж --priority 3.wav");
    const QString source = folder + name;
    ASSERT_EQ(QProcess::execute(QStringLiteral("/usr/bin/sox"),
                                {QStringLiteral("-n"), QStringLiteral("-r"), QStringLiteral("44100"), QStringLiteral("-c"),
                                 QStringLiteral("2"), QStringLiteral("-b"), QStringLiteral("16"), source,
                                 QStringLiteral("synth"), QStringLiteral("1"), QStringLiteral("sine"), QStringLiteral("440")}),
              0);
    const QByteArray sourceHash = hashOf(source);

    PosixProcesses p;
    const struct
    {
        QString codec, options, extension;
        QByteArray magic;
    } encoders[] = {
        {QStringLiteral("lame"), QStringLiteral("--preset extreme --silent --priority"), QStringLiteral(".mp3"), "\xFF"},
        {QStringLiteral("lame"), QStringLiteral("-V 2 --priority 3 --silent --priority"), QStringLiteral(".mp3"), "\xFF"},
        {QStringLiteral("oggenc2"), QStringLiteral("--quiet --quality 6"), QStringLiteral(".ogg"), "OggS"},
        {QStringLiteral("mppenc"), QStringLiteral("--overwrite --silent --insane"), QStringLiteral(".mpc"), "MPCK"},
    };
    for (const auto &e : encoders) {
        const JobPaths paths = jobPaths(folder, name, e.extension);
        QFile::remove(paths.target);
        ASSERT_TRUE(runEntry(p, e.codec, e.options, paths)) << e.codec.toStdString();
        EXPECT_EQ(head(paths.target, e.magic.size()), e.magic) << e.options.toStdString();
    }
    const struct
    {
        QString codec, options, extension;
    } decoders[] = {
        {QStringLiteral("lame"), QStringLiteral("--decode"), QStringLiteral(".mp3")},
        {QStringLiteral("oggdec"), QString(), QStringLiteral(".ogg")},
        {QStringLiteral("mppdec"), QString(), QStringLiteral(".mpc")},
    };
    for (const auto &d : decoders) {
        const JobPaths paths = jobPaths(folder, name.left(name.size() - 4) + d.extension, d.extension + QStringLiteral(".wav"));
        ASSERT_TRUE(runEntry(p, d.codec, d.options, paths)) << d.codec.toStdString();
        EXPECT_EQ(head(paths.target, 4), QByteArray("RIFF")) << d.codec.toStdString();
        EXPECT_GT(QFileInfo(paths.target).size(), 100000);
    }
    EXPECT_EQ(hashOf(source), sourceHash);
    // Nothing beside the expected files: no decoder wrote a file of its own choosing.
    EXPECT_EQ(QDir(folder).entryList(QDir::Files).size(), 7);
}
