#pragma once

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/FolderListing.h"
#include "platform/posix/ItemPlace.h"

#include <string>
#include <sys/stat.h>
#include <vector>

namespace hdiutil {

// The folder that stands for an attached volume. Its permissions mark it while it does: read-only and sticky, which no
// folder is by accident, and nothing is written that the volume does not hold. Failures are thrown, as Failure or
// FileFailure.
class MountPoint {
public:
    // Opens a real folder of the calling user; a link is not followed.
    explicit MountPoint(const std::string& path);

    // Makes a private folder inside, which no other user can enter, and returns it open. The mount point must be empty
    // and unmarked.
    platform::FileDescriptor claim();

    // Moves everything in an open folder below the mount point to the top of the mount point.
    void publish(int folder);

    // Removes the private folder and marks the mount point as attached.
    void mark();

    // Takes everything back that this object did. Whether nothing is left of it.
    bool restore() noexcept;

    // Removes everything and the mount point itself. Touches nothing unless it bears the mark.
    void detach();

    // Removes the mount point itself, if it is empty and still where it was.
    void removeIfEmpty();

    // The absolute path without links.
    std::string resolvedPath() const;

private:
    bool isMarked() const;
    platform::ItemPlace placeOf(const std::string& name) const;
    std::vector<platform::FolderEntry> entries() const;

    platform::ItemPlace place_;
    platform::FileDescriptor folder_;
    struct stat status_ {};
    // Empty while there has been no private folder.
    std::string privateName_;
    // Of the entries that this object has made.
    std::vector<std::string> made_;
};

} // namespace hdiutil
