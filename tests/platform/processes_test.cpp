#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>

#include <QDir>
#include <QFile>

#include <poll.h>
#include <unistd.h>

#include "platform/posix/posixprocesses.h"
#include "platform/processes.h"
#include "support/qtprinters.h"

using namespace kv;
using namespace Qt::StringLiterals;

TEST(SplitCommandLine, QuotesGroupBlanksSeparateBackslashesEscapeQuotes)
{
    // Real command lines with awkward names go through here in the convert command's tests.
    const struct { const char *line; std::vector<const char *> args; } cases[] = {
        {"  a\t\tb   ", {"a", "b"}},
        {"a\"b c\"d e", {"ab cd", "e"}},
        {"\"\" x", {"", "x"}},
        {R"(a\b c\\d\ "e\f\\")", {R"(a\b)", R"(c\\d\)", R"(e\f\)"}},    // literal unless before a quote
        {R"(a\"b c\\"d e" f\\\"g)", {R"(a"b)", R"(c\d e)", R"(f\"g)"}}, // 2n+1: literal quote; 2n: groups
        {R"("say \"hi\".wav" \")", {R"(say "hi".wav)", R"(")"}},
        {"\"unterminated group", {"unterminated group"}},
        {"   ", {}},
    };
    for (const auto &c : cases) {
        QStringList expected;
        for (const char *a : c.args)
            expected.append(QString::fromUtf8(a));
        EXPECT_EQ(splitCommandLine(QString::fromUtf8(c.line)), expected) << c.line;
    }
    // Quoting gives every argument back whole.
    for (const char *arg : {"", "a\\b", R"(\"x\\"" y\)", R"(end\\)", "\"\"", "'$ `ё"}) {
        const QString a = QString::fromUtf8(arg);
        EXPECT_EQ(splitCommandLine(quoteArgument(a) + u" z"_s), QStringList({a, u"z"_s})) << arg;
    }
}

TEST(ProcessorCount, ClampedToOneToEight)
{
    for (const auto &[in, out] : {std::pair{-1L, 1}, {0L, 1}, {1L, 1}, {8L, 8}, {9L, 8}})
        EXPECT_EQ(clampProcessorCount(in), out) << in;
}

namespace {

QByteArray readProc(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

TEST(PosixProcesses, ChildGetsEmptyEnvironmentNullStdioOwnGroupNoInheritedDescriptors)
{
    PosixProcesses p;
    const auto h = p.start(u"\"/bin/sleep\" 30"_s, ChildEnvironment::Empty);
    ASSERT_TRUE(h.has_value());
    // Our only child; the spawn returns once it has run the program.
    const QString pid = QString::fromLatin1(readProc(u"/proc/%1/task/%1/children"_s.arg(::getpid())).trimmed());
    const QString proc = u"/proc/"_s + pid;
    ASSERT_EQ(readProc(proc + u"/comm"_s), "sleep\n");
    EXPECT_EQ(readProc(proc + u"/environ"_s), QByteArray());
    const QStringList fds = QDir(proc + u"/fd"_s).entryList(QDir::System | QDir::NoDotAndDotDot);
    EXPECT_EQ(fds, QStringList({u"0"_s, u"1"_s, u"2"_s}));
    for (const QString &fd : fds)
        EXPECT_EQ(QFile::symLinkTarget(proc + u"/fd/"_s + fd), u"/dev/null"_s);
    EXPECT_EQ(readProc(proc + u"/stat"_s).split(' ').value(4), pid.toUtf8()); // group of its own
    p.kill(*h);
}

TEST(PosixProcesses, PollKillWholeGroupAndFailedStart)
{
    PosixProcesses p;
    EXPECT_TRUE(p.hasEnded(0));
    EXPECT_TRUE(p.hasEnded(12345));
    EXPECT_FALSE(p.start(u"\"/nonexistent/codec/lame\" a b"_s, ChildEnvironment::Empty).has_value());
    EXPECT_FALSE(p.start(u"   "_s, ChildEnvironment::Empty).has_value());

    const auto h = p.start(uR"("/bin/sh" -c "/bin/sleep 30 | /bin/cat")"_s, ChildEnvironment::Empty);
    ASSERT_TRUE(h.has_value());
    EXPECT_FALSE(p.hasEnded(*h));
    const auto before = std::chrono::steady_clock::now();
    p.kill(*h); // returns once the pipe's both ends are gone, not after the sleep
    EXPECT_TRUE(p.hasEnded(*h));
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2));
    p.kill(*h); // reaped: never signalled again
}

TEST(PosixProcesses, ExitOfAChildWakesTheWatcher)
{
    PosixProcesses p;
    const int fd = PosixProcesses::exitEventDescriptor();
    PosixProcesses::clearExitEvents();
    const auto h = p.start(u"\"/bin/true\""_s, ChildEnvironment::Empty);
    ASSERT_TRUE(h.has_value());
    pollfd pfd{fd, POLLIN, 0};
    int ready = -1;
    while ((ready = ::poll(&pfd, 1, 1000)) < 0 && errno == EINTR) {
    }
    ASSERT_EQ(ready, 1);
    EXPECT_TRUE(p.hasEnded(*h));
    PosixProcesses::clearExitEvents();
    EXPECT_EQ(::poll(&pfd, 1, 0), 0);
}
