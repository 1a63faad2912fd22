#pragma once

#include <map>
#include <set>
#include <vector>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/processes.h"

namespace kv::test {

struct FakeClock : Clock
{
    double now = 36000;
    double secondsSinceMidnight() override { return now; }
};

// Files by path with sizes only; paths in readOnly refuse deletion.
struct FakeFiles : Files
{
    std::map<QString, std::int64_t> sizes;
    std::set<QString> readOnly;
    std::vector<QString> removed;

    std::optional<std::int64_t> fileSize(const QString &path) override
    {
        const auto it = sizes.find(path);
        return it == sizes.end() ? std::nullopt : std::optional<std::int64_t>(it->second);
    }
    std::unique_ptr<ByteSource> open(const QString &) override { return nullptr; }
    RemoveResult remove(const QString &path) override
    {
        if (readOnly.count(path))
            return RemoveResult::AccessDenied;
        if (!sizes.erase(path))
            return RemoveResult::OtherError;
        removed.push_back(path);
        return RemoveResult::Removed;
    }
    std::optional<QByteArray> readAll(const QString &) override { return std::nullopt; }
    bool writeAtStart(const QString &, const QByteArray &) override { return false; }
};

// Processes that run until the test ends them; a launch fails while failLaunches is set.
struct FakeProcesses : Processes
{
    std::vector<QString> commandLines; // of successful launches, in order
    std::set<ProcessHandle> running;
    std::set<ProcessHandle> killed;
    ProcessHandle last = 0;
    bool failLaunches = false;
    int polls = 0;

    std::optional<ProcessHandle> start(const QString &commandLine, ChildEnvironment env) override
    {
        if (failLaunches || env != ChildEnvironment::Empty)
            return std::nullopt;
        commandLines.push_back(commandLine);
        running.insert(++last);
        return last;
    }
    bool hasEnded(ProcessHandle h) override
    {
        ++polls;
        return !running.count(h);
    }
    void kill(ProcessHandle h) override
    {
        running.erase(h);
        killed.insert(h);
    }
    int processorCount() override { return 4; }
    // Ends the process started n-th (1-based).
    void finish(ProcessHandle h) { running.erase(h); }
};

} // namespace kv::test
