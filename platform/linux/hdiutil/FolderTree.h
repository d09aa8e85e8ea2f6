#pragma once

#include "FileDescriptor.h"

#include <cstdint>
#include <string>
#include <vector>

namespace hdiutil {

// The names in an open folder, without "." and "..", in no order. Throws Failure.
std::vector<std::string> entryNames(int folder);

// Opens a folder inside an open folder; a link is not followed. The result is empty, with errno set, if that fails.
FileDescriptor openFolder(int parent, const std::string& name);

// Removes entries by descriptor: never through a link, never on another file system than the folder it began in. What
// somebody else removes meanwhile counts as removed; what cannot be removed is left, and the rest goes on.
class TreeRemoval {
public:
    // Everything is to be on the file system that this folder is on.
    explicit TreeRemoval(int folder);

    void removeContents(int folder);
    void removeEntry(int folder, const std::string& name);

    // The error number of the first entry that stayed, or 0.
    int firstError() const { return _firstError; }

private:
    struct FileSystem {
        std::uint64_t device = 0;
        std::uint64_t mount = 0; // tells two mounts of one device apart, where the kernel can
        bool operator==(const FileSystem&) const = default;
    };

    static FileSystem fileSystemOf(int folder);
    FileDescriptor openForRemoval(int parent, const std::string& name);
    void note(int error);

    FileSystem _fileSystem;
    int _firstError = 0;
};

} // namespace hdiutil
