#include "platform/posix/posixprocesses.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <vector>

#include <QFile>

#include <fcntl.h>
#include <spawn.h>
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

    int drain() const
    {
        int count = 0;
        char buf[64];
        for (;;) {
            const ssize_t got = ::read(readEnd, buf, sizeof buf);
            if (got > 0) {
                count += static_cast<int>(got);
                continue;
            }
            if (got < 0 && errno == EINTR)
                continue;
            return count;
        }
    }

    void notify() const
    {
        const int saved = errno;
        const char byte = 1;
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

void onInterrupt(int)
{
    g_interruptPipe.notify();
}

} // namespace

PosixProcesses::PosixProcesses()
{
    installChildHandler();
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

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attr;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attr);
    // Codecs never talk to the terminal: no input to wait on, no output to mix with ours.
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
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
    if (rc != 0)
        return std::nullopt;

    const ProcessHandle handle = ++m_lastHandle;
    m_children[handle] = Child{pid, false};
    return handle;
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
        if (r == 0)
            return false;
        if (r < 0 && errno == EINTR)
            continue;
        // Reaped now, or already gone (ECHILD): either way the id may be reused from here on.
        child.reaped = true;
        return true;
    }
}

void PosixProcesses::kill(ProcessHandle handle)
{
    const auto it = m_children.find(handle);
    if (it == m_children.end() || it->second.reaped)
        return;
    Child &child = it->second;
    ::kill(-child.pid, SIGKILL);
    int status = 0;
    while (::waitpid(child.pid, &status, 0) < 0 && errno == EINTR) {
    }
    child.reaped = true;
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
    ::sigaction(SIGINT, &action, nullptr);
    return g_interruptPipe.readEnd;
}

bool isTerminal(int fd)
{
    return ::isatty(fd) == 1;
}

int InterruptWatcher::takeCount()
{
    return g_interruptPipe.readEnd >= 0 ? g_interruptPipe.drain() : 0;
}

} // namespace kv
