#pragma once

#include "platform/volumes.h"

namespace kv {

// The drive list from the kernel's mount table; mount points that are no folder are left out.
class PosixVolumes : public Volumes
{
public:
    std::vector<Volume> mounted() override;
};

} // namespace kv
