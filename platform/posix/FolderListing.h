#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace platform {

struct FolderEntry {
    std::string name;
    // The S_IFMT bits of its mode.
    mode_t type = 0;
};

// Appends what is in the folder, without "." and "..", in no order. False with errno when it cannot be listed.
bool listFolder(int folder, std::vector<FolderEntry>& entries);

} // namespace platform
