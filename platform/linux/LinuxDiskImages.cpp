#include "platform/linux/LinuxDiskImages.h"

#include <unistd.h>

namespace platform {

std::string LinuxDiskImages::toolPath() {
    constexpr const char* systemTool = "/usr/bin/hdiutil";
    if (::access(systemTool, X_OK) == 0)
        return systemTool;
    return bundles_.mainBundlePath() + "/Contents/Helpers/hdiutil";
}

} // namespace platform
