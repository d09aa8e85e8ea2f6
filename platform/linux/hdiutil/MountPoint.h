#pragma once

#include "FileDescriptor.h"

#include <string>
#include <sys/stat.h>
#include <vector>

namespace hdiutil {

// The folder that stands for an attached volume. Its permissions mark it while it does: read-only and sticky, which no
// folder is by accident, and nothing is written that the volume does not hold.
class MountPoint {
public:
    // Opens a real folder of the calling user; a link is not followed. Throws Failure for anything else.
    explicit MountPoint(const std::string& path);

    // Makes a private folder inside, which no other user can enter, and returns it open; it belongs to this object.
    // Throws Failure unless the mount point is empty and unmarked.
    int claim();

    // Moves everything in an open folder below the mount point to the top of the mount point.
    void publish(int folder);

    // Removes the private folder and marks the mount point as attached.
    void mark();

    // Takes everything back that this object did. What it could not remove is told by the result, an error number or 0.
    int restore() noexcept;

    // Removes everything and the mount point itself. Throws Failure and touches nothing unless it bears the mark.
    void detach();

    // Removes the mount point itself, if it is empty and still where it was. The result is an error number or 0.
    int removeFolder();

    // The absolute path without links.
    std::string resolvedPath() const;

private:
    bool isMarked() const;

    FileDescriptor _parent;
    std::string _name;
    FileDescriptor _folder;
    struct stat _status {};
    std::string _stagingName; // empty while there is no private folder
    FileDescriptor _staging;
    std::vector<std::string> _published;
};

} // namespace hdiutil
