#pragma once

// The window's real environment, as the program's own start builds it, but for one drive (so the
// tree does not walk the machine's mounts) and message boxes that nobody has to press.

#include <cstdio>
#include <functional>
#include <utility>
#include <vector>

#include <QString>

#include "app/maincontroller.h"
#include "gui/guiplatform.h"
#include "platform/posix/posixclock.h"
#include "platform/posix/posixfiles.h"
#include "platform/posix/posixfolders.h"
#include "platform/posix/posixinstancelock.h"
#include "platform/posix/posixprocesses.h"
#include "platform/volumes.h"

namespace kv::bench {

struct OneDrive : kv::Volumes
{
    explicit OneDrive(QString r) : root(std::move(r)) {}
    QString root;
    std::vector<kv::Volume> mounted() override { return {kv::Volume{root, QStringLiteral("ext4")}}; }
};

struct Quiet : kv::Messages
{
    void information(const QString &t) override { std::fprintf(stderr, "message: %s\n", qPrintable(t)); }
    void critical(const QString &t) override { std::fprintf(stderr, "message: %s\n", qPrintable(t)); }
};

// processorCount: the slots a run gets; by default what the machine has, as in the program.
struct RealEnvironment
{
    RealEnvironment(const QString &programFolder, const QString &driveRoot, std::function<int()> processorCount = {})
        : drive(driveRoot), lock(programFolder),
          controller(kv::Environment{files, folders, drive, lock, messages, busy, kv::headerReaders(files),
                                     processorCount ? std::move(processorCount)
                                                    : std::function<int()>([this] { return processes.processorCount(); }),
                                     {}, &processes, &clock, [] {}, processes.wakeups()})
    {
        kv::PosixProcesses::preferPromptWakeups(); // as the program does
    }

    kv::PosixFiles files;
    kv::PosixFolders folders;
    OneDrive drive;
    kv::PosixInstanceLock lock;
    kv::PosixProcesses processes;
    kv::PosixClock clock;
    Quiet messages;
    kv::GuiBusyCursor busy;
    kv::MainController controller;
};

} // namespace kv::bench
