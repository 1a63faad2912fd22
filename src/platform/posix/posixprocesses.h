#pragma once

#include <sys/types.h>

#include <unordered_map>
#include <vector>

#include <QByteArray>

#include "platform/processes.h"

namespace kv {

// Codec and player processes started with posix_spawn. Also owns the wake-up for ended children:
// a SIGCHLD handler writes to a pipe whose read end a run watches, so a finished codec is seen
// within milliseconds instead of at the next tick. Each child's standard error goes to a pipe of
// which only the last bytes are kept, so a failing codec can be told about.
class PosixProcesses : public Processes
{
public:
    PosixProcesses();
    ~PosixProcesses() override;
    PosixProcesses(const PosixProcesses &) = delete;
    PosixProcesses &operator=(const PosixProcesses &) = delete;

    std::optional<ProcessHandle> start(const QString &commandLine, ChildEnvironment environment) override;
    bool hasEnded(ProcessHandle handle) override;
    void kill(ProcessHandle handle) override;
    std::optional<ProcessEnd> endOf(ProcessHandle handle) override;
    void release(ProcessHandle handle) override;
    int processorCount() override;

    // Readable while a child's standard error has bytes waiting; watch it and call readOutput(),
    // so that a codec writing a lot is never held up by a full pipe.
    int outputDescriptor() const { return m_outputEvents; }
    void readOutput();

    // Readable after some child of this program ended; watch it with poll() or a socket notifier.
    static int exitEventDescriptor();
    // Empties that descriptor; call before the tick work it triggers, so no exit is missed.
    static void clearExitEvents();
    // The three above together, for the event loop that runs a conversion.
    RunWakeups wakeups();

    // Asks a short scheduling slice for the calling thread, the one that reaps and starts codecs:
    // woken by a codec's end it then runs at once instead of queueing behind the other codecs,
    // and the freed processor is refilled. Codecs it starts keep the ordinary slice. Kernels
    // without per-task slices take the request and change nothing.
    static void preferPromptWakeups();

private:
    struct Child
    {
        pid_t pid = 0;
        bool reaped = false;
        int errorPipe = -1; // read end, -1 once closed
        ProcessEnd end;
    };
    void reaped(Child &child, int status);
    void readErrors(Child &child);
    void closeErrors(Child &child);

    std::unordered_map<ProcessHandle, Child> m_children;
    ProcessHandle m_lastHandle = 0;
    int m_outputEvents = -1; // epoll set of the open error pipes
};

// The signals that interrupt a command-line run (SIGINT, SIGTERM, SIGHUP, SIGPIPE), delivered
// through a pipe so the run's loop can act on them outside the signal handler.
class InterruptWatcher
{
public:
    // Installs the handlers; the pipe's read end becomes readable at every such signal. A write
    // to a closed pipe then fails with EPIPE instead of ending the program.
    static int install();
    // The signals received since the last call, in order, draining the pipe.
    static std::vector<int> takeSignals();
};

// Whether a descriptor is a terminal (progress is redrawn in place only there).
bool isTerminal(int fd);

} // namespace kv
