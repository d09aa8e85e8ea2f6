#pragma once

#include "platform/Bundles.h"
#include "platform/DiskImages.h"

namespace platform {

// The system's disk image tool, or the one that comes with the program.
class LinuxDiskImages : public DiskImages {
public:
    // Borrowed for the object's life.
    explicit LinuxDiskImages(Bundles& bundles) : bundles_(bundles) {}

    std::string toolPath() override;

private:
    Bundles& bundles_;
};

} // namespace platform
