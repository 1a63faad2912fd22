#include "app/runwakeups.h"

#include <QSocketNotifier>

#include "platform/processes.h"

namespace kv {

void watchRunWakeups(QObject *owner, const RunWakeups &wakeups, const std::function<void()> &ended)
{
    if (wakeups.exits >= 0) {
        auto *exits = new QSocketNotifier(wakeups.exits, QSocketNotifier::Read, owner);
        QObject::connect(exits, &QSocketNotifier::activated, owner, [clear = wakeups.clearExits, ended] {
            if (clear)
                clear();
            ended();
        });
    }
    if (wakeups.output >= 0 && wakeups.readOutput) {
        auto *output = new QSocketNotifier(wakeups.output, QSocketNotifier::Read, owner);
        QObject::connect(output, &QSocketNotifier::activated, owner, wakeups.readOutput);
    }
}

} // namespace kv
