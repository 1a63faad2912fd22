#pragma once

#include <memory>

#include <QString>

#include "platform/instancelock.h"

class QLockFile;

namespace kv {

// A lock file in the temporary folder named after a hash of the program folder, so two copies
// of the program in different folders run side by side, as two installations should.
class PosixInstanceLock : public InstanceLock
{
public:
    explicit PosixInstanceLock(const QString &programFolder);
    ~PosixInstanceLock() override;
    bool tryLock() override;

    static QString lockPath(const QString &programFolder);

private:
    std::unique_ptr<QLockFile> m_lock;
};

} // namespace kv
