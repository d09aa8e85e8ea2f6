#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <vector>

namespace platform {

// What tells an item from every other for as long as it exists, whatever its name.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

FileIdentity identityOf(const struct stat& status);

// Of an open file or folder. One of nothing when it cannot be had.
FileIdentity identityOf(int descriptor);

// The folder and all folders above it, by "..". As far up as this user may look.
std::vector<FileIdentity> ancestry(int folder);

// Whether the folder is where another volume begins, or another view of the same one; `parent` is the device of the
// folder that holds it.
bool isVolumeRoot(int folder, dev_t parent);

// Whether the list holds the identity.
bool contains(const std::vector<FileIdentity>& list, const FileIdentity& identity);

} // namespace platform
