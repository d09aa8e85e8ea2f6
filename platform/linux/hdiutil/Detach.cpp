#include "platform/linux/hdiutil/Detach.h"

#include "platform/linux/hdiutil/Interruption.h"
#include "platform/linux/hdiutil/MountPoint.h"

#include <cstdio>

namespace hdiutil {

void detach(const std::string& path) {
    // Half a volume would no longer bear the mark, and nobody could remove the rest.
    deferInterruptions();
    MountPoint(path).detach();
    std::printf("\"%s\" ejected.\n", path.c_str());
}

} // namespace hdiutil
