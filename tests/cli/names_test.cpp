#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "clifixtures.h"
#include "support/qtprinters.h"

using namespace Qt::StringLiterals;

extern char **environ;

namespace {

struct RawResult
{
    QByteArray out;
    QByteArray err;
    int status = -1;
};

QByteArray readRaw(const QByteArray &path)
{
    QFile f;
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 || !f.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return {};
    return f.readAll();
}

void writeRaw(const QByteArray &path, const QByteArray &content)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    ASSERT_GE(fd, 0) << path.constData();
    ASSERT_EQ(::write(fd, content.constData(), static_cast<size_t>(content.size())), content.size());
    ::close(fd);
}

std::int64_t rawSize(const QByteArray &path)
{
    struct stat st {};
    return ::stat(path.constData(), &st) == 0 ? st.st_size : -1;
}

// Runs the CLI with arguments passed byte for byte: QProcess would re-encode them as UTF-8,
// which is exactly what names that are not UTF-8 must survive without.
RawResult runRaw(const QByteArrayList &args)
{
    QTemporaryDir io;
    const QByteArray outPath = QFile::encodeName(io.filePath(u"out"_s));
    const QByteArray errPath = QFile::encodeName(io.filePath(u"err"_s));
    QByteArray program = QFile::encodeName(cliPath());
    QByteArrayList words = args;
    std::vector<char *> argv{program.data()};
    for (QByteArray &w : words)
        argv.push_back(w.data());
    argv.push_back(nullptr);
    QByteArrayList environment{"LC_ALL=C.UTF-8"};
    for (char **e = environ; *e; ++e)
        if (!QByteArray(*e).startsWith("LC_ALL="))
            environment.append(*e);
    std::vector<char *> envp;
    for (QByteArray &e : environment)
        envp.push_back(e.data());
    envp.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, outPath.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&actions, 2, errPath.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    pid_t pid = 0;
    RawResult r;
    const int rc = ::posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0)
        return r;
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0)
        ;
    r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    r.out = readRaw(outPath);
    r.err = readRaw(errPath);
    return r;
}

QByteArray sineWav()
{
    QTemporaryDir dir;
    makeWav(dir.filePath(u"a.wav"_s));
    return bytes(dir.filePath(u"a.wav"_s));
}

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
    QTemporaryDir root;
    // QTemporaryDir cannot remove names that are not UTF-8.
    const std::unique_ptr<QTemporaryDir, void (*)(QTemporaryDir *)> removal(
        &root, [](QTemporaryDir *d) { QProcess::execute(u"rm"_s, {u"-rf"_s, d->path()}); });
    const QByteArray folder = QFile::encodeName(root.path()) + "/\xCC\xF3\xE7\xFB\xEA\xE0"; // "Музыка"
    ASSERT_EQ(::mkdir(folder.constData(), 0755), 0);
    const QByteArray russian = "\xCF\xE5\xF1\xED\xFF"; // "Песня"
    const QByteArray latin = "caf\xE9";
    const QByteArray wav = sineWav();
    ASSERT_FALSE(wav.isEmpty());
    for (const QByteArray &name : {russian, latin})
        writeRaw(folder + '/' + name + ".wav", wav);

    const RawResult listed = runRaw({"list", folder});
    EXPECT_EQ(listed.status, 0) << listed.err.constData();
    const QByteArray replacement = "\xEF\xBF\xBD";
    EXPECT_EQ(rows(listed.out), (QByteArrayList{"caf" + replacement + ".wav\t172\t0:00:01\t1411\t44100\tStereo",
                                                replacement.repeated(5) + ".wav\t172\t0:00:01\t1411\t44100\tStereo"}));

    const RawResult encoded = runRaw({"convert", "--to", "mp3", folder});
    EXPECT_EQ(encoded.status, 0) << encoded.out.constData() << encoded.err.constData();
    for (const QByteArray &name : {russian, latin}) {
        EXPECT_GT(rawSize(folder + '/' + name + ".mp3"), 1000) << name.toHex().constData();
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
    QTemporaryDir dir;
    const QByteArray wav = sineWav();
    const QByteArray root = QFile::encodeName(dir.path()) + '/';
    for (const char *name : {"tab\tname.wav", "line\nbreak.wav", "back\\slash.wav", "esc\x1b\r.wav", "nel\xC2\x85.wav"})
        writeRaw(root + name, wav);
    const QByteArray tail = "\t172\t0:00:01\t1411\t44100\tStereo";

    const RawResult listed = runRaw({"list", root});
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(rows(listed.out), (QByteArrayList{"back\\\\slash.wav" + tail, "esc\\x1b\\r.wav" + tail,
                                                "line\\nbreak.wav" + tail, "nel\\xc2\\x85.wav" + tail,
                                                "tab\\tname.wav" + tail}));

    const RawResult converted = runRaw({"convert", "--to", "ogg", root, "tab\tname.wav", "line\nbreak.wav"});
    EXPECT_EQ(converted.status, 0) << converted.err.constData();
    const QByteArrayList jobs = rows(converted.out);
    ASSERT_EQ(jobs.size(), 3) << converted.out.constData();
    // In list order.
    EXPECT_TRUE(jobs[0].startsWith("line\\nbreak.wav\tDone\t")) << jobs[0].constData();
    EXPECT_TRUE(jobs[1].startsWith("tab\\tname.wav\tDone\t")) << jobs[1].constData();

    const struct { QByteArrayList args; QByteArray err; } refused[] = {
        {{"convert", "--to", "ogg", root, "no\tsuch\\.wav"},
         "kestrelvane-cli: no\\tsuch\\\\.wav: not listed in " + root + "\n"},
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
}
