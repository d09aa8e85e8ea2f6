#pragma once

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/FileFailure.h"
#include "platform/posix/FileIdentity.h"

#include <string>

namespace platform {

// Where an item is or will be: its folder, open as a place only, and its name there.
struct ItemPlace {
    FileDescriptor folder;
    std::string name;
    std::string path;

    // Throws when the folder cannot be found. The item need not exist.
    static ItemPlace of(const std::string& path, FileAccess access);

    // What is there; a link itself. Throws when nothing is.
    struct stat status(FileAccess access) const;
};

} // namespace platform
