#pragma once

#include <sys/types.h>

#include <unordered_map>

#include "platform/processes.h"

namespace kv {

// Codec and player processes started with posix_spawn. Also owns the wake-up for ended children:
// a SIGCHLD handler writes to a pipe whose read end a run watches, so a finished codec is seen
// within milliseconds instead of at the next tick.
class PosixProcesses : public Processes
{
public:
    PosixProcesses();
    std::optional<ProcessHandle> start(const QString &commandLine, ChildEnvironment environment) override;
    bool hasEnded(ProcessHandle handle) override;
    void kill(ProcessHandle handle) override;
    int processorCount() override;

    // Readable after some child of this program ended; watch it with poll() or a socket notifier.
    static int exitEventDescriptor();
    // Empties that descriptor; call before the tick work it triggers, so no exit is missed.
    static void clearExitEvents();

private:
    struct Child
    {
        pid_t pid = 0;
        bool reaped = false;
    };
    std::unordered_map<ProcessHandle, Child> m_children;
    ProcessHandle m_lastHandle = 0;
};

// The first Ctrl-C (SIGINT) of a command-line run, and the second, delivered through a pipe so
// the run's loop can act on them outside the signal handler.
class InterruptWatcher
{
public:
    // Installs the handler; the pipe's read end becomes readable at every SIGINT.
    static int install();
    // Interrupts received since install(), draining the pipe.
    static int takeCount();
};

// Whether a descriptor is a terminal (progress is redrawn in place only there).
bool isTerminal(int fd);

} // namespace kv
