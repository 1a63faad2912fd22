#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace kv {

// An opaque number for one started process; 0 is "no process". A handle stays valid until its
// owner releases it, and never names a later process that happens to get the same system id.
using ProcessHandle = std::int64_t;

// Whose environment a started program gets: codecs get none at all, the system's sound player
// gets the program's own.
enum class ChildEnvironment { Empty, Inherited };

// How a process ended, once it has: its exit code, or the signal that ended it, and the last
// bytes it wrote on its standard error (at most ErrorTailLimit).
struct ProcessEnd
{
    static constexpr int ErrorTailLimit = 4096;
    int exitCode = 0;
    int signal = 0; // 0: it exited
    QByteArray errorTail;

    bool failed() const { return exitCode != 0 || signal != 0; }
    bool operator==(const ProcessEnd &) const = default;
};

// Child processes: started hidden in a group of their own, polled without waiting, and killed
// with their whole group. Never throws.
class Processes
{
public:
    virtual ~Processes() = default;
    // Starts the program a command line names (first argument, absolute path); nothing when the
    // process could not be created.
    virtual std::optional<ProcessHandle> start(const QString &commandLine, ChildEnvironment environment) = 0;
    // Zero-wait poll. A process that ended, an unknown handle and handle 0 all count as ended.
    virtual bool hasEnded(ProcessHandle handle) = 0;
    // Kills the process's whole group and reaps it; nothing happens to a process already reaped.
    virtual void kill(ProcessHandle handle) = 0;
    // How the process ended; nothing while it runs or for an unknown handle.
    virtual std::optional<ProcessEnd> endOf(ProcessHandle handle) = 0;
    // The owner is done with an ended process: its record and error tail go, and the handle
    // counts as unknown from then on. A process still running stays known, so it can be reaped.
    virtual void release(ProcessHandle handle) = 0;
    // Number of processors, 1 to 8.
    virtual int processorCount() = 0;
};

// How an event loop learns that children have news: descriptors that become readable when a
// child ended (exits) or wrote on its standard error (output); -1 when there is none to watch.
struct RunWakeups
{
    int exits = -1;
    int output = -1;
    std::function<void()> clearExits; // before the tick an exit wakes, so no exit is missed
    std::function<void()> readOutput;
};

// Splits a command line into arguments by the codecs' original platform's rules: blanks and tabs
// separate; a double quote switches grouping on and off (and is dropped); runs of blanks make no
// empty argument, a quoted "" alone is one empty argument. Backslashes are ordinary characters
// except before a double quote: 2n of them give n and the quote groups, 2n+1 give n and a
// literal quote.
QStringList splitCommandLine(const QString &commandLine);

// One argument between double quotes, escaped so that splitCommandLine gives it back unchanged:
// a quote inside becomes \" with the backslashes before it doubled, as are trailing ones.
QString quoteArgument(const QString &argument);

// What the machine reports, clamped to the 1 to 8 conversions that may run at once.
int clampProcessorCount(long reported);

} // namespace kv
