#pragma once

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/FileFailure.h"

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace platform {

struct FolderEntry {
    std::string name;
    // The S_IFMT bits of its mode.
    mode_t type = 0;
};

// Opens a folder for its entries to be listed and reached, never through a link. A relative name begins in the open
// folder. Not open, with errno, when it cannot be.
FileDescriptor openFolderIn(int folder, const std::string& name);

// What is in the folder, without "." and "..", in no order. Nothing, with errno, when it cannot be listed.
std::optional<std::vector<FolderEntry>> listFolder(int folder);

// The same; throws when it cannot be listed. The path is for error texts.
std::vector<FolderEntry> entriesOf(int folder, FileAccess access, const std::string& path);

} // namespace platform
