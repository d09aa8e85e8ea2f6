#pragma once

#include "platform/DiskImages.h"

namespace platform {

// The system's own tool.
class MacDiskImages : public DiskImages {
public:
    std::string toolPath() override { return "/usr/bin/hdiutil"; }
};

} // namespace platform
