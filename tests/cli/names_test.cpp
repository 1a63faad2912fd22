#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "clifixtures.h"
#include "support/qtprinters.h"

using namespace Qt::StringLiterals;

namespace {

struct RawResult
{
    QByteArray out, err;
    int status = -1;
};

// Names that are not UTF-8 cannot go through QFile's names: plain descriptors instead.
QByteArray readRaw(const QByteArray &path)
{
    QFile f;
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    return fd >= 0 && f.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle) ? f.readAll() : QByteArray();
}

// A one-second sine under a name given byte for byte: a link to one made once.
void linkWav(const QByteArray &path)
{
    static QTemporaryDir dir;
    static const QByteArray wav = [] {
        makeWav(dir.filePath(u"a.wav"_s));
        return QFile::encodeName(dir.filePath(u"a.wav"_s));
    }();
    ASSERT_EQ(::link(wav.constData(), path.constData()), 0) << path.constData();
}

// Runs the CLI with arguments passed byte for byte, through a shell script: QProcess would
// re-encode them as UTF-8, which is exactly what names that are not UTF-8 must survive without.
RawResult runRaw(const QByteArrayList &args, const QByteArray &program = QFile::encodeName(cliPath()))
{
    QTemporaryDir dir;
    QByteArray script = "LC_ALL=C.UTF-8 exec";
    for (const QByteArray &arg : QByteArrayList{program} + args)
        script += " '" + QByteArray(arg).replace('\'', "'\\''") + '\'';
    write(dir.filePath(u"run"_s), script + " </dev/null\n");
    QProcess p;
    p.start(u"/bin/sh"_s, {dir.filePath(u"run"_s)});
    if (!p.waitForFinished(60000))
        p.kill();
    return {p.readAllStandardOutput(), p.readAllStandardError(), p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1};
}

// As nobody when run as root, whom a folder's permissions would not stop.
RawResult runUnprivileged(const QByteArrayList &args)
{
    if (::geteuid() != 0)
        return runRaw(args);
    ::chmod(QFile::encodeName(QFileInfo(cliPath()).path()).constData(), 0755);
    const QByteArrayList asNobody{"--reuid=65534", "--regid=65534", "--clear-groups", QFile::encodeName(cliPath())};
    return runRaw(asNobody + args, "/usr/bin/setpriv");
}

// A temporary folder that may come to hold names that are not UTF-8, which QTemporaryDir
// cannot remove: rm does.
struct RawTemporaryDir : QTemporaryDir
{
    ~RawTemporaryDir() { QProcess::execute(u"rm"_s, {u"-rf"_s, path()}); }
};

// The output lines from the second up to the first empty one: the listed rows.
QByteArrayList rows(const QByteArray &out)
{
    QByteArrayList lines = out.split('\n');
    QByteArrayList result;
    for (qsizetype i = 1; i < lines.size() && !lines[i].isEmpty(); ++i)
        result.append(lines[i]);
    return result;
}

} // namespace

// A Windows-1251 folder holding a Windows-1251 and a Latin-1 name: listed with U+FFFD shown for
// each such byte, converted to MP3 and back, the targets keeping the same bytes.
TEST(NamesNotUtf8, ListAndConvertBothWaysWithRealCodecs)
{
    RawTemporaryDir root;
    const QByteArray folder = QFile::encodeName(root.path()) + "/\xCC\xF3\xE7\xFB\xEA\xE0"; // "Музыка"
    ASSERT_EQ(::mkdir(folder.constData(), 0755), 0);
    const QByteArray russian = "\xCF\xE5\xF1\xED\xFF"; // "Песня"
    const QByteArray latin = "caf\xE9";
    for (const QByteArray &name : {russian, latin})
        linkWav(folder + '/' + name + ".wav");

    const RawResult listed = runRaw({"list", folder});
    EXPECT_EQ(listed.status, 0) << listed.err.constData();
    const QByteArray replacement = "\xEF\xBF\xBD";
    EXPECT_EQ(rows(listed.out), (QByteArrayList{"caf" + replacement + ".wav\t172\t0:00:01\t1411\t44100\tStereo",
                                                replacement.repeated(5) + ".wav\t172\t0:00:01\t1411\t44100\tStereo"}));

    // Run from a program folder named so too: the codecs beside it are found all the same.
    ProgramCopy copy;
    const QByteArray program = QFile::encodeName(root.path()) + "/\xCF\xF0\xEE\xE3"; // "Прог"
    ASSERT_EQ(::rename(QFile::encodeName(copy.dir.path()).constData(), program.constData()), 0);
    const RawResult encoded = runRaw({"convert", "--to", "mp3", folder}, program + "/kestrelvane-cli");
    EXPECT_EQ(encoded.status, 0) << encoded.out.constData() << encoded.err.constData();
    for (const QByteArray &name : {russian, latin}) {
        EXPECT_GT(readRaw(folder + '/' + name + ".mp3").size(), 1000) << name.toHex().constData();
        ASSERT_EQ(::unlink((folder + '/' + name + ".wav").constData()), 0);
    }

    // Decoded one at a time, each named on the command line by its own bytes.
    for (const QByteArray &name : {russian, latin}) {
        const RawResult decoded = runRaw({"convert", "--to", "wav", "--from", "mp3", folder, name + ".mp3"});
        EXPECT_EQ(decoded.status, 0) << decoded.out.constData() << decoded.err.constData();
        EXPECT_EQ(rows(decoded.out).size(), 2) << decoded.out.constData(); // the job and "Finished 1 of 1"
        EXPECT_TRUE(readRaw(folder + '/' + name + ".wav").startsWith("RIFF")) << name.toHex().constData();
    }
}

TEST(NamesWithControlCharacters, EscapedInListConvertAndMessages)
{
    RawTemporaryDir dir;
    const QByteArray root = QFile::encodeName(dir.path()) + '/';
    // DEL, U+0085 and U+009F are controls too, the last two the first and the last of C1; U+00A0 is
    // not, nor is Thai (three bytes, the first 0xE0).
    for (const char *name : {"tab\tname.wav", "line\nbreak.wav", "back\\slash.wav", "esc\x1b\x7f\r.wav", "nel\xC2\x85.wav",
                             "apc\xC2\x9F.wav", "nbsp\xC2\xA0.wav", "thai\xE0\xB9\x80.wav"})
        linkWav(root + name);
    const QByteArray tail = "\t172\t0:00:01\t1411\t44100\tStereo";

    const RawResult listed = runRaw({"list", root});
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(rows(listed.out), (QByteArrayList{"apc\\xc2\\x9f.wav" + tail, "back\\\\slash.wav" + tail,
                                                "esc\\x1b\\x7f\\r.wav" + tail, "line\\nbreak.wav" + tail,
                                                "nbsp\xC2\xA0.wav" + tail, "nel\\xc2\\x85.wav" + tail,
                                                "tab\\tname.wav" + tail, "thai\xE0\xB9\x80.wav" + tail}));

    const RawResult converted = runRaw({"convert", "--to", "ogg", root, "tab\tname.wav", "line\nbreak.wav"});
    EXPECT_EQ(converted.status, 0) << converted.err.constData();
    const QByteArrayList jobs = rows(converted.out);
    ASSERT_EQ(jobs.size(), 3) << converted.out.constData();
    // In list order.
    EXPECT_TRUE(jobs[0].startsWith("line\\nbreak.wav\tDone\t")) << jobs[0].constData();
    EXPECT_TRUE(jobs[1].startsWith("tab\\tname.wav\tDone\t")) << jobs[1].constData();

    ASSERT_EQ(::mkdir((root + "in\tfolder").constData(), 0700), 0);
    const struct { QByteArrayList args; QByteArray err; } refused[] = {
        {{"convert", "--to", "ogg", root + "in\tfolder/", "no\tsuch\\.wav"},
         "kestrelvane-cli: no\\tsuch\\\\.wav: not listed in " + root + "in\\tfolder/\n"},
        {{"list", root + "gone\n\xE9"}, "kestrelvane-cli: " + root + "gone\\n\xEF\xBF\xBD: no such folder\n"},
        {{"list", root + "tab\tname.wav"}, "kestrelvane-cli: " + root + "tab\\tname.wav: not a folder\n"},
        {{"list", "--kind", "x\ty", root},
         "kestrelvane-cli: unknown kind \"x\\ty\" (wav, mp3, ogg or mpc)\n"
         "usage: kestrelvane-cli list [--kind wav|mp3|ogg|mpc] [--lang en|ru] FOLDER\n"},
    };
    for (const auto &c : refused) {
        const RawResult r = runRaw(c.args);
        EXPECT_EQ(r.status, 2);
        EXPECT_EQ(r.out, QByteArray());
        EXPECT_EQ(r.err, c.err);
    }
    // A folder that may not be read is said to be so, by either command.
    ASSERT_EQ(::chmod(QFile::encodeName(dir.path()).constData(), 0711), 0);
    ASSERT_EQ(::mkdir((root + "shut\tfolder").constData(), 0), 0);
    for (const QByteArrayList &command : {QByteArrayList{"list"}, QByteArrayList{"convert", "--to", "mp3"}}) {
        const RawResult r = runUnprivileged(command + QByteArrayList{root + "shut\tfolder"});
        EXPECT_EQ(r.status, 2);
        EXPECT_EQ(r.err, "kestrelvane-cli: " + root + "shut\\tfolder: cannot read folder\n");
    }
    // So is an unknown command, before the overview of the known ones.
    const RawResult unknown = runRaw({"li\tst"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_TRUE(unknown.err.startsWith("kestrelvane-cli: unknown command \"li\\tst\"\n")) << unknown.err.constData();

    // A program in such a folder with no codec beside it converts nothing and names each entry.
    const QByteArray program = root + "prog\t\xE9/";
    ASSERT_EQ(::mkdir(program.constData(), 0700), 0);
    ASSERT_EQ(::link(QFile::encodeName(cliPath()).constData(), (program + "kestrelvane-cli").constData()), 0);
    QByteArray missing;
    for (const char *codec : {"lame", "madplay", "mppenc", "mppdec", "oggenc2", "oggdec"})
        missing += root + "prog\\t\xEF\xBF\xBD/codec/" + codec + " not found\n";
    const RawResult r = runRaw({"convert", "--to", "mp3", root}, program + "kestrelvane-cli");
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, missing);
    EXPECT_FALSE(QFile::exists(QFile::decodeName(root + "tab\tname.mp3")));
}
