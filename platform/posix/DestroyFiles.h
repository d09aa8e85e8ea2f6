#pragma once

#include "platform/Files.h"

#include <string>
#include <vector>

namespace platform {

// Removes the named items of the folder. True only if all are gone and each was there; nothing is removed when a name
// is none.
bool destroyFiles(FileChanges& changes, const std::string& folder, const std::vector<std::string>& names);

} // namespace platform
