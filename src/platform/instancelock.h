#pragma once

namespace kv {

// The single-instance rule: one running window per user and program folder.
class InstanceLock
{
public:
    virtual ~InstanceLock() = default;
    // True when this process now holds the lock (a dead holder's lock is taken over); false when
    // another running instance holds it. Held until the object is destroyed.
    virtual bool tryLock() = 0;
};

} // namespace kv
