#pragma once

#include "platform/posix/FileIdentity.h"

#include <functional>
#include <string>

namespace platform {

// A folder that was just made.
struct MadeFolder {
    std::string path;
    FileIdentity identity;
    // The folder that holds it, open for the duration of the call.
    int parent = -1;
};

// Makes a folder and its missing parents, for this user alone, and tells each one that it makes. Is content with a real
// folder of this user that is there already; throws in every other case. Links on the way are followed.
void createFolders(const std::string& path, const std::function<void(const MadeFolder&)>& made);

} // namespace platform
