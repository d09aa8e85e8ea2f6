#pragma once

#include <string>

namespace hdiutil {

// Removes a mount point that attach filled, with everything in it. Throws Failure, and touches nothing, if the folder
// is anything else.
void detach(const std::string& path);

} // namespace hdiutil
