#pragma once

#include "platform/posix/FileIdentity.h"

#include <string>
#include <vector>

namespace platform {

// The guard in front of every removal of a whole folder whose path was put together from outside text: such a path may
// aim at the temporary folder, the home or "/".
class ProtectedFolders {
public:
    // Neither these folders nor any folder above them is ever removed. They need not exist.
    explicit ProtectedFolders(std::vector<std::string> paths) : paths_(std::move(paths)) {}

    // Throws unless the path is absolute and has no empty, "." or ".." part.
    static void requirePlainPath(const std::string& path);

    // Throws unless the open folder is one of this user, and neither a protected folder nor above one.
    void requireRemovable(int folder, const std::string& path) const;

private:
    std::vector<FileIdentity> identities() const;

    std::vector<std::string> paths_;
};

} // namespace platform
