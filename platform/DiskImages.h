#pragma once

#include <string>

namespace platform {

// The tool that attaches and detaches disk images.
class DiskImages {
public:
    virtual ~DiskImages() = default;

    // The absolute path of a program with hdiutil's command line.
    virtual std::string toolPath() = 0;
};

} // namespace platform
