#include "platform/posix/posixprocesses.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/nativenames.h"

namespace kv {

namespace {

// Self-pipes written from signal handlers: non-blocking and close-on-exec, so a full pipe never
// blocks a handler and no codec inherits them.
struct SignalPipe
{
    int readEnd = -1;
    int writeEnd = -1;

    void open()
    {
        if (readEnd >= 0)
            return;
        int fds[2];
        if (::pipe2(fds, O_CLOEXEC | O_NONBLOCK) == 0) {
            readEnd = fds[0];
            writeEnd = fds[1];
        }
    }

    std::vector<int> drain() const
    {
        std::vector<int> bytes;
        unsigned char buf[64];
        for (;;) {
            const ssize_t got = ::read(readEnd, buf, sizeof buf);
            if (got > 0) {
                bytes.insert(bytes.end(), buf, buf + got);
                continue;
            }
            if (got < 0 && errno == EINTR)
                continue;
            return bytes;
        }
    }

    void notify(int value = 1) const
    {
        const int saved = errno;
        const auto byte = static_cast<unsigned char>(value);
        [[maybe_unused]] const ssize_t ignored = ::write(writeEnd, &byte, 1);
        errno = saved;
    }
};

SignalPipe g_exitPipe;
SignalPipe g_interruptPipe;
struct sigaction g_previousChildAction {};

// Qt (or anyone before us) may have its own SIGCHLD handler; it keeps working through the chain.
void onChildSignal(int sig, siginfo_t *info, void *context)
{
    g_exitPipe.notify();
    if (g_previousChildAction.sa_flags & SA_SIGINFO) {
        if (g_previousChildAction.sa_sigaction)
            g_previousChildAction.sa_sigaction(sig, info, context);
    } else if (g_previousChildAction.sa_handler != SIG_DFL && g_previousChildAction.sa_handler != SIG_IGN) {
        g_previousChildAction.sa_handler(sig);
    }
}

void installChildHandler()
{
    static bool installed = false;
    if (installed)
        return;
    installed = true;
    g_exitPipe.open();
    struct sigaction action {};
    action.sa_sigaction = onChildSignal;
    action.sa_flags = SA_SIGINFO | SA_RESTART | SA_NOCLDSTOP;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGCHLD, &action, &g_previousChildAction);
}

void onInterrupt(int sig)
{
    g_interruptPipe.notify(sig);
}

// Appends to a tail that never grows beyond the limit, however much a child writes.
void keepTail(QByteArray &tail, const char *bytes, qsizetype n)
{
    const qsizetype limit = ProcessEnd::ErrorTailLimit;
    if (n >= limit) {
        tail = QByteArray(bytes + n - limit, limit);
        return;
    }
    tail.append(bytes, n);
    if (tail.size() > limit)
        tail.remove(0, tail.size() - limit);
}

} // namespace

PosixProcesses::PosixProcesses()
{
    installChildHandler();
    m_outputEvents = ::epoll_create1(EPOLL_CLOEXEC);
}

PosixProcesses::~PosixProcesses()
{
    for (auto &[handle, child] : m_children)
        closeErrors(child);
    if (m_outputEvents >= 0)
        ::close(m_outputEvents);
}

std::optional<ProcessHandle> PosixProcesses::start(const QString &commandLine, ChildEnvironment environment)
{
    const QStringList words = splitCommandLine(commandLine);
    if (words.isEmpty())
        return std::nullopt;

    std::vector<QByteArray> encoded;
    encoded.reserve(static_cast<size_t>(words.size()));
    for (const QString &w : words)
        encoded.push_back(bytesFromName(w));
    std::vector<char *> argv;
    for (QByteArray &a : encoded)
        argv.push_back(a.data());
    argv.push_back(nullptr);

    char *emptyEnvironment[] = {nullptr};
    char **envp = environment == ChildEnvironment::Empty ? emptyEnvironment : environ;

    // Only our end is non-blocking: a codec writing to a full pipe waits, it does not fail.
    int errorPipe[2];
    if (::pipe2(errorPipe, O_CLOEXEC) != 0)
        return std::nullopt;
    ::fcntl(errorPipe[0], F_SETFL, ::fcntl(errorPipe[0], F_GETFL) | O_NONBLOCK);

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attr;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attr);
    // Codecs never talk to the terminal: no input to wait on, no output to mix with ours. Their
    // error output is kept, so a failure can be told.
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, errorPipe[1], 2);
#if defined(__GLIBC__) && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 34))
    posix_spawn_file_actions_addclosefrom_np(&actions, 3);
#endif
    // Own group: a Ctrl-C at the terminal does not reach the codecs, and a kill reaches the
    // whole pipeline of a player. Signals we catch or ignore start at their defaults.
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setpgroup(&attr, 0);
    posix_spawnattr_setsigmask(&attr, &none);
    posix_spawnattr_setsigdefault(&attr, &all);
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    pid_t pid = 0;
    const int rc = ::posix_spawn(&pid, argv[0], &actions, &attr, argv.data(), envp);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attr);
    ::close(errorPipe[1]);
    if (rc != 0) {
        ::close(errorPipe[0]);
        return std::nullopt;
    }

    const ProcessHandle handle = ++m_lastHandle;
    Child &child = m_children[handle];
    child.pid = pid;
    child.errorPipe = errorPipe[0];
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u64 = static_cast<std::uint64_t>(handle);
    ::epoll_ctl(m_outputEvents, EPOLL_CTL_ADD, child.errorPipe, &event);
    return handle;
}

void PosixProcesses::preferPromptWakeups()
{
    // The kernel's layout of sched_setattr's argument; its header clashes with glibc's sched.h.
    struct
    {
        std::uint32_t size, policy;
        std::uint64_t flags;
        std::int32_t nice;
        std::uint32_t priority;
        std::uint64_t runtime, deadline, period;
    } attr{};
    constexpr std::uint64_t resetOnFork = 0x01;
    errno = 0;
    const int nice = ::getpriority(PRIO_PROCESS, 0);
    if (errno != 0)
        return;
    attr.size = sizeof attr;
    attr.policy = SCHED_OTHER;
    attr.flags = resetOnFork;
    attr.nice = nice; // a user's nice stays
    attr.runtime = 100'000; // 0.1 ms, the shortest the kernel grants
    ::syscall(SYS_sched_setattr, 0, &attr, 0);
}

void PosixProcesses::readErrors(Child &child)
{
    // A bounded share per call: a child writing as fast as we read never holds the loop.
    char buf[65536];
    for (int round = 0; round < 16 && child.errorPipe >= 0; ++round) {
        const ssize_t got = ::read(child.errorPipe, buf, sizeof buf);
        if (got > 0) {
            keepTail(child.end.errorTail, buf, got);
        } else if (got < 0 && errno == EINTR) {
            continue;
        } else {
            if (got == 0 || errno != EAGAIN)
                closeErrors(child); // every writer is gone
            return;
        }
    }
}

void PosixProcesses::closeErrors(Child &child)
{
    if (child.errorPipe < 0)
        return;
    ::epoll_ctl(m_outputEvents, EPOLL_CTL_DEL, child.errorPipe, nullptr);
    ::close(child.errorPipe);
    child.errorPipe = -1;
}

void PosixProcesses::reaped(Child &child, int status)
{
    child.reaped = true;
    if (WIFEXITED(status))
        child.end.exitCode = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        child.end.signal = WTERMSIG(status);
    // What it wrote before its end is in the pipe now; a descendant still holding the pipe open
    // is not waited for.
    readErrors(child);
    closeErrors(child);
}

void PosixProcesses::readOutput()
{
    // One pass; the descriptor stays readable while anything is left, so the owner comes back.
    epoll_event events[16];
    int n = 0;
    while ((n = ::epoll_wait(m_outputEvents, events, 16, 0)) < 0 && errno == EINTR) {
    }
    for (int i = 0; i < n; ++i) {
        const auto it = m_children.find(static_cast<ProcessHandle>(events[i].data.u64));
        if (it != m_children.end())
            readErrors(it->second);
    }
}

std::optional<ProcessEnd> PosixProcesses::endOf(ProcessHandle handle)
{
    if (!hasEnded(handle))
        return std::nullopt;
    const auto it = m_children.find(handle);
    if (it == m_children.end())
        return std::nullopt;
    return it->second.end;
}

bool PosixProcesses::hasEnded(ProcessHandle handle)
{
    const auto it = m_children.find(handle);
    if (it == m_children.end())
        return true;
    Child &child = it->second;
    if (child.reaped)
        return true;
    for (;;) {
        int status = 0;
        const pid_t r = ::waitpid(child.pid, &status, WNOHANG);
        if (r == 0) {
            // An owner that only polls still keeps the pipe flowing, at the pace of its polls.
            readErrors(child);
            return false;
        }
        if (r < 0 && errno == EINTR)
            continue;
        // Reaped now, or already gone (ECHILD): either way the id may be reused from here on.
        reaped(child, r == child.pid ? status : 0);
        return true;
    }
}

void PosixProcesses::release(ProcessHandle handle)
{
    // Polled first: a child that ended but was not reaped yet is reaped now, never left a zombie.
    const auto it = m_children.find(handle);
    if (it == m_children.end() || !hasEnded(handle))
        return;
    closeErrors(it->second);
    m_children.erase(it);
}

void PosixProcesses::kill(ProcessHandle handle)
{
    const auto it = m_children.find(handle);
    if (it == m_children.end() || it->second.reaped)
        return;
    Child &child = it->second;
    ::kill(-child.pid, SIGKILL);
    int status = 0;
    pid_t r = 0;
    while ((r = ::waitpid(child.pid, &status, 0)) < 0 && errno == EINTR) {
    }
    reaped(child, r == child.pid ? status : 0);
}

int PosixProcesses::processorCount()
{
    return clampProcessorCount(::sysconf(_SC_NPROCESSORS_ONLN));
}

int PosixProcesses::exitEventDescriptor()
{
    installChildHandler();
    return g_exitPipe.readEnd;
}

RunWakeups PosixProcesses::wakeups()
{
    return RunWakeups{exitEventDescriptor(), outputDescriptor(), [] { clearExitEvents(); }, [this] { readOutput(); }};
}

void PosixProcesses::clearExitEvents()
{
    if (g_exitPipe.readEnd >= 0)
        g_exitPipe.drain();
}

int InterruptWatcher::install()
{
    g_interruptPipe.open();
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int sig : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        ::sigaction(sig, &action, nullptr);
    return g_interruptPipe.readEnd;
}

bool isTerminal(int fd)
{
    return ::isatty(fd) == 1;
}

std::vector<int> InterruptWatcher::takeSignals()
{
    return g_interruptPipe.readEnd >= 0 ? g_interruptPipe.drain() : std::vector<int>();
}

} // namespace kv
