#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <poll.h>
#include <unistd.h>

#include "platform/posix/posixprocesses.h"
#include "platform/processes.h"
#include "support/qtprinters.h"

using namespace kv;

TEST(SplitCommandLine, QuotesGroupBlanksSeparate)
{
    const struct
    {
        const char *line;
        std::vector<const char *> args;
    } cases[] = {
        {R"("/p/codec/lame" --preset extreme --silent --priority "/m/a b.wav" "/m/a b.mp3")",
         {"/p/codec/lame", "--preset", "extreme", "--silent", "--priority", "/m/a b.wav", "/m/a b.mp3"}},
        {"\"/p/codec/oggdec\"  \"/m/x.ogg\" \"/m/x.wav\"", {"/p/codec/oggdec", "/m/x.ogg", "/m/x.wav"}},
        {"  a\t\tb   ", {"a", "b"}},
        {"a\"b c\"d e", {"ab cd", "e"}},
        {"\"\" x", {"", "x"}},
        {R"("/m/it's $HOME `id` -x.wav")", {"/m/it's $HOME `id` -x.wav"}},
        {R"(a\b "c\" d)", {R"(a\b)", R"(c\)", "d"}},
        {"\"unterminated group", {"unterminated group"}},
        {"", {}},
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
    const struct { long in; int out; } cases[] = {{-1, 1}, {0, 1}, {1, 1}, {2, 2}, {8, 8}, {9, 8}, {16, 8}};
    for (const auto &c : cases)
        EXPECT_EQ(clampProcessorCount(c.in), c.out) << c.in;
    PosixProcesses p;
    EXPECT_GE(p.processorCount(), 1);
    EXPECT_LE(p.processorCount(), 8);
}

namespace {

QString shellLine(const QString &script)
{
    return QStringLiteral("\"/bin/sh\" -c \"") + script + QLatin1Char('"');
}

} // namespace

namespace {

QByteArray readProc(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// The id of our only child running program, read from /proc.
QString childWithCommand(const QByteArray &command)
{
    const QByteArray self = QByteArray::number(::getpid());
    for (const QString &pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const QList<QByteArray> stat = readProc(QStringLiteral("/proc/") + pid + QStringLiteral("/stat")).split(' ');
        if (stat.size() > 4 && stat[1] == "(" + command + ")" && stat[3] == self)
            return pid;
    }
    return {};
}

} // namespace

TEST(PosixProcesses, ChildGetsEmptyEnvironmentNullStdioOwnGroupNoInheritedDescriptors)
{
    PosixProcesses p;
    const auto h = p.start(QStringLiteral("\"/bin/sleep\" 30"), ChildEnvironment::Empty);
    ASSERT_TRUE(h.has_value());
    QString pid;
    for (int i = 0; i < 200 && pid.isEmpty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        pid = childWithCommand("sleep");
    }
    ASSERT_FALSE(pid.isEmpty());
    const QString proc = QStringLiteral("/proc/") + pid;
    EXPECT_EQ(readProc(proc + QStringLiteral("/environ")), QByteArray());
    const QStringList fds = QDir(proc + QStringLiteral("/fd")).entryList(QDir::System | QDir::NoDotAndDotDot);
    EXPECT_EQ(fds, QStringList({QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2")}));
    for (const QString &fd : fds)
        EXPECT_EQ(QFile::symLinkTarget(proc + QStringLiteral("/fd/") + fd), QStringLiteral("/dev/null"));
    EXPECT_EQ(readProc(proc + QStringLiteral("/stat")).split(' ').value(4), pid.toUtf8()); // group of its own
    EXPECT_FALSE(p.hasEnded(*h));
    p.kill(*h);
    EXPECT_TRUE(p.hasEnded(*h));
}

TEST(PosixProcesses, PollKillAndFailedStart)
{
    PosixProcesses p;
    EXPECT_TRUE(p.hasEnded(0));
    EXPECT_TRUE(p.hasEnded(12345));
    EXPECT_FALSE(p.start(QStringLiteral("\"/nonexistent/codec/lame\" a b"), ChildEnvironment::Empty).has_value());
    EXPECT_FALSE(p.start(QStringLiteral("   "), ChildEnvironment::Empty).has_value());

    const auto sleeper = p.start(shellLine(QStringLiteral("/bin/sleep 30 | /bin/cat")), ChildEnvironment::Empty);
    ASSERT_TRUE(sleeper.has_value());
    EXPECT_FALSE(p.hasEnded(*sleeper));
    const auto before = std::chrono::steady_clock::now();
    p.kill(*sleeper);
    EXPECT_TRUE(p.hasEnded(*sleeper));
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2));
    p.kill(*sleeper); // reaped: never signalled again
    EXPECT_TRUE(p.hasEnded(*sleeper));
}

TEST(PosixProcesses, ExitOfAChildWakesTheWatcher)
{
    PosixProcesses p;
    const int fd = PosixProcesses::exitEventDescriptor();
    ASSERT_GE(fd, 0);
    PosixProcesses::clearExitEvents();
    const auto before = std::chrono::steady_clock::now();
    const auto h = p.start(QStringLiteral("\"/bin/true\""), ChildEnvironment::Empty);
    ASSERT_TRUE(h.has_value());
    pollfd pfd{fd, POLLIN, 0};
    int ready = -1;
    while ((ready = ::poll(&pfd, 1, 5000)) < 0 && errno == EINTR) {
    }
    ASSERT_EQ(ready, 1);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
    EXPECT_TRUE(p.hasEnded(*h));
    PosixProcesses::clearExitEvents();
    EXPECT_EQ(::poll(&pfd, 1, 0), 0);
}
