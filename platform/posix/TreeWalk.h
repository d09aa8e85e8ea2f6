#pragma once

#include "platform/posix/FolderCursor.h"

#include <string>
#include <vector>

namespace platform {

// What to do in the folders of a tree. Failures are thrown and end the walk.
class FolderVisitor {
public:
    virtual ~FolderVisitor() = default;

    // In a folder, before its subfolders. The names of those to go into.
    virtual std::vector<std::string> enterFolder(FolderCursor& at) = 0;

    // Opens a subfolder of `at`; one that is not open is passed over.
    virtual FileDescriptor openFolder(FolderCursor& at, const std::string& name) = 0;

    // In the parent, after all that is in the subfolder.
    virtual void leaveFolder(FolderCursor& parent, const std::string& name) = 0;
};

// Visits the folder and all folders below it, however deep. `at` is back in the folder afterwards.
void walkTree(FolderCursor& at, FolderVisitor& visitor);

} // namespace platform
