#pragma once

#include <cstdio>
#include <vector>

#include <QString>

#include "app/maincontroller.h"
#include "platform/volumes.h"

namespace kv::bench {

// One drive, the workload's folder, so the tree does not walk the machine's mounts.
struct OneDrive : kv::Volumes
{
    QString root;
    std::vector<kv::Volume> mounted() override { return {kv::Volume{root, QStringLiteral("ext4")}}; }
};

// Message boxes go to standard error: a benchmark has nobody to press OK.
struct Quiet : kv::Messages
{
    void information(const QString &t) override { std::fprintf(stderr, "message: %s\n", qPrintable(t)); }
    void critical(const QString &t) override { std::fprintf(stderr, "message: %s\n", qPrintable(t)); }
};

} // namespace kv::bench
