#pragma once

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/FileFailure.h"
#include "platform/posix/FileIdentity.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace platform {

// A place in a tree of folders. It holds one descriptor however deep the place is: the way up goes by "..", and must
// lead to the folder that the way down came from. Failures are thrown.
class FolderCursor {
public:
    // Begins in a folder that is open for reading; the path is for error texts.
    FolderCursor(FileDescriptor root, std::string path, FileAccess access);

    int descriptor() const { return folder_->get(); }
    // The same; the folder stays open as long as it is held.
    std::shared_ptr<const FileDescriptor> folder() const { return folder_; }

    // The folder's state at the time the cursor came here.
    const struct stat& status() const { return status_; }

    // 0 in the first folder.
    std::size_t depth() const { return above_.size(); }

    std::string pathOf(const std::string& name) const { return path_.empty() ? name : path_ + "/" + name; }
    const std::string& path() const { return path_; }
    FileAccess access() const { return access_; }

    // Opens a folder in this one, never through a link. A descriptor that is not open, with errno, when it cannot be.
    FileDescriptor open(const std::string& name) const;

    // Goes into a folder in this one.
    void enter(const std::string& name, FileDescriptor folder);

    // Goes up. The folder that was left, still open.
    std::shared_ptr<const FileDescriptor> leave();

private:
    struct Above {
        FileIdentity identity;
        std::size_t pathLength = 0;
    };

    void moveTo(FileDescriptor folder);

    std::shared_ptr<const FileDescriptor> folder_;
    struct stat status_ {};
    std::string path_;
    FileAccess access_;
    std::vector<Above> above_;
};

} // namespace platform
