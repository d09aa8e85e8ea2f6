#include "platform/posix/FolderCursor.h"

#include "platform/posix/FolderListing.h"

#include <cerrno>
#include <utility>

namespace platform {

FolderCursor::FolderCursor(FileDescriptor root, std::string path, FileAccess access)
    : path_(std::move(path)), access_(access) {
    moveTo(std::move(root));
}

void FolderCursor::moveTo(FileDescriptor folder) {
    struct stat status {};
    if (::fstat(folder.get(), &status) != 0)
        throwErrno(access_, path_);
    status_ = status;
    folder_ = std::make_shared<const FileDescriptor>(std::move(folder));
}

FileDescriptor FolderCursor::open(const std::string& name) const {
    return openFolderIn(descriptor(), name);
}

void FolderCursor::enter(const std::string& name, FileDescriptor folder) {
    const Above above{identityOf(status_), path_.size()};
    path_ = pathOf(name);
    moveTo(std::move(folder));
    above_.push_back(above);
}

std::shared_ptr<const FileDescriptor> FolderCursor::leave() {
    FileDescriptor parent = open("..");
    if (!parent.isOpen())
        throwErrno(access_, path_);
    std::shared_ptr<const FileDescriptor> left = folder_;
    moveTo(std::move(parent));
    if (identityOf(status_) != above_.back().identity)
        throw FileFailure{access_, path_, ESTALE, "the folder was moved meanwhile"};
    path_.resize(above_.back().pathLength);
    above_.pop_back();
    return left;
}

} // namespace platform
