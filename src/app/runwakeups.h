#pragma once

#include <functional>

class QObject;

namespace kv {

struct RunWakeups;

// Watches a conversion's wake-ups from the event loop, the same for the window and the command
// line: after some codec ended, the exit events are cleared and `ended` runs at once (so a freed
// slot is refilled without waiting for the 100 ms timer); a codec's error output is read as it
// comes, so a codec flooding it is never held up by a full pipe. The watchers belong to owner.
void watchRunWakeups(QObject *owner, const RunWakeups &wakeups, const std::function<void()> &ended);

} // namespace kv
