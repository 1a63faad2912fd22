#include <gtest/gtest.h>

#include <csignal>
#include <memory>

#include <QDir>
#include <QFile>
#include <QThread>

#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/posixprocesses.h"
#include "platform/processes.h"
#include "support/qtprinters.h"

using namespace kv;
using namespace Qt::StringLiterals;

TEST(SplitCommandLine, QuotesGroupBlanksSeparateBackslashesEscapeQuotes)
{
    // Quoting and splitting back is in the command-line fuzz target's replay.
    const struct { const char *line; std::vector<const char *> args; } cases[] = {
        {"  a\t\tb   ", {"a", "b"}},
        {"a\"b c\"d e", {"ab cd", "e"}},
        {"\"\" x", {"", "x"}},
        {R"(a\b c\\d\ "e\f\\")", {R"(a\b)", R"(c\\d\)", R"(e\f\)"}},    // literal unless before a quote
        {R"(a\"b c\\"d e" f\\\"g)", {R"(a"b)", R"(c\d e)", R"(f\"g)"}}, // 2n+1: literal quote; 2n: groups
        {R"("say \"hi\".wav" \")", {R"(say "hi".wav)", R"(")"}},
        {R"(\"a b)", {R"("a)", "b"}}, // at the very start too
        {"\"unterminated group", {"unterminated group"}},
        {"   ", {}},
    };
    for (const auto &c : cases) {
        QStringList expected;
        for (const char *a : c.args)
            expected.append(QString::fromUtf8(a));
        EXPECT_EQ(splitCommandLine(QString::fromUtf8(c.line)), expected) << c.line;
    }
}

TEST(ProcessorCount, ClampedToOneToEight)
{
    for (const auto &[in, out] : {std::pair{-1L, 1}, {0L, 1}, {1L, 1}, {8L, 8}, {9L, 8}})
        EXPECT_EQ(clampProcessorCount(in), out) << in;
}

namespace {

// Descriptors open now; the one pipe that child exits wake is opened first, as it stays open for good.
qsizetype openDescriptors()
{
    PosixProcesses::exitEventDescriptor();
    return QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System).size();
}

QByteArray readProc(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// The pid of our only child once it runs the named program: read too early, /proc shows this
// test's own image and environment.
QString childRunning(const char *program)
{
    for (int i = 0; i < 2000; ++i) {
        const QString pid = QString::fromLatin1(readProc(u"/proc/self/task/%1/children"_s.arg(::getpid())).trimmed());
        if (!pid.isEmpty() && QFile::symLinkTarget(u"/proc/"_s + pid + u"/exe"_s).endsWith(QLatin1String(program)))
            return pid;
        QThread::msleep(1);
    }
    return {};
}

} // namespace

TEST(PosixProcesses, ChildGetsEmptyEnvironmentNullInputOwnGroupDefaultSignalsNoInheritedDescriptors)
{
    qputenv("KV_INHERITED", "1"); // so an inherited environment would show
    const int inheritable = ::open("/dev/null", O_RDONLY); // so an inherited descriptor would show
    ASSERT_GE(inheritable, 3);
    // A hang-up ignored by whoever started the program, as under nohup, is not passed on.
    struct sigaction ignore {}, before {};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGHUP, &ignore, &before);
    PosixProcesses p;
    const auto h = p.start(u"\"/bin/sleep\" 30"_s, ChildEnvironment::Empty);
    ::sigaction(SIGHUP, &before, nullptr);
    ::close(inheritable);
    ASSERT_TRUE(h.has_value());
    const QString pid = childRunning("sleep");
    ASSERT_FALSE(pid.isEmpty());
    const QString proc = u"/proc/"_s + pid;
    EXPECT_EQ(readProc(proc + u"/environ"_s), QByteArray());
    // Right after its exec, sleep itself opens and closes its locale files: wait for it to
    // settle, as an inherited descriptor never would.
    const QStringList bare({u"0"_s, u"1"_s, u"2"_s});
    QStringList fds;
    for (int i = 0; i < 200 && fds != bare; ++i) {
        if (i > 0)
            QThread::msleep(10);
        fds = QDir(proc + u"/fd"_s).entryList(QDir::System | QDir::NoDotAndDotDot);
    }
    EXPECT_EQ(fds, bare);
    EXPECT_EQ(QFile::symLinkTarget(proc + u"/fd/0"_s), u"/dev/null"_s);
    EXPECT_EQ(QFile::symLinkTarget(proc + u"/fd/1"_s), u"/dev/null"_s);
    EXPECT_TRUE(QFile::symLinkTarget(proc + u"/fd/2"_s).contains(u"pipe:"_s)); // kept for a failure report
    EXPECT_EQ(readProc(proc + u"/stat"_s).split(' ').value(4), pid.toUtf8()); // group of its own
    const QByteArray status = readProc(proc + u"/status"_s);
    const quint64 ignored = status.mid(status.indexOf("SigIgn:\t") + 8, 16).toULongLong(nullptr, 16);
    EXPECT_FALSE(ignored & (1ULL << (SIGHUP - 1))) << status.constData();
    p.kill(*h);
}

// A player's pipeline killed as a whole group is in the player frame's test.
TEST(PosixProcesses, UnknownHandlesHaveEndedAndFailedStartsKeepNoDescriptor)
{
    PosixProcesses p;
    EXPECT_TRUE(p.hasEnded(12345));
    EXPECT_FALSE(p.endOf(12345).has_value());
    const qsizetype before = openDescriptors();
    EXPECT_FALSE(p.start(u"\"/nonexistent/codec/lame\" a b"_s, ChildEnvironment::Empty).has_value());
    EXPECT_FALSE(p.start(u"   "_s, ChildEnvironment::Empty).has_value());
    EXPECT_EQ(openDescriptors(), before);
}

// Letting go of a child: one that ended is reaped, never left a zombie, and forgotten with its
// error output; one still running stays known, to be killed and told as before.
// An owner that goes leaves no descriptor of its own behind.
TEST(PosixProcesses, ReleaseForgetsOnlyEndedChildrenAndReapsThem)
{
    const qsizetype before = openDescriptors();
    auto owner = std::make_unique<PosixProcesses>();
    PosixProcesses &p = *owner;
    const auto ended = p.start(u"\"/bin/sleep\" 0.1"_s, ChildEnvironment::Empty);
    ASSERT_TRUE(ended.has_value());
    const QString pid = childRunning("sleep");
    ASSERT_FALSE(pid.isEmpty());
    const QString stat = u"/proc/"_s + pid + u"/stat"_s;
    for (int i = 0; i < 3000 && readProc(stat).mid(readProc(stat).lastIndexOf(')') + 2, 1) != "Z"; ++i)
        QThread::msleep(1);
    ASSERT_TRUE(readProc(stat).contains(") Z ")) << "ended, not yet polled";
    p.release(*ended);
    EXPECT_FALSE(QFile::exists(stat));
    EXPECT_TRUE(p.hasEnded(*ended));
    EXPECT_FALSE(p.endOf(*ended).has_value());

    const auto running = p.start(u"\"/bin/sleep\" 30"_s, ChildEnvironment::Empty);
    ASSERT_TRUE(running.has_value());
    p.release(*running);
    EXPECT_FALSE(p.hasEnded(*running));
    p.kill(*running);
    EXPECT_EQ(p.endOf(*running)->signal, SIGKILL);
    p.release(*running);
    EXPECT_FALSE(p.endOf(*running).has_value());
    owner.reset();
    EXPECT_EQ(openDescriptors(), before);
}
