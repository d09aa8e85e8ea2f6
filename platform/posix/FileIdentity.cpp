#include "platform/posix/FileIdentity.h"

#include "platform/posix/FileDescriptor.h"

#include <algorithm>
#include <fcntl.h>

namespace platform {

FileIdentity identityOf(const struct stat& status) {
    return {status.st_dev, status.st_ino};
}

std::vector<FileIdentity> ancestry(int folder) {
    std::vector<FileIdentity> chain;
    FileDescriptor at(::openat(folder, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat status {};
    while (at.isOpen() && ::fstat(at.get(), &status) == 0) {
        const FileIdentity identity = identityOf(status);
        if (!chain.empty() && chain.back() == identity)
            break; // the parent of "/" is "/"
        chain.push_back(identity);
        at = FileDescriptor(::openat(at.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    return chain;
}

bool isVolumeRoot(int folder, dev_t parent) {
    struct statx status {};
    if (::statx(folder, "", AT_EMPTY_PATH, STATX_BASIC_STATS, &status) == 0 &&
        (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0)
        return true;
    struct stat plain {};
    return ::fstat(folder, &plain) != 0 || plain.st_dev != parent;
}

bool contains(const std::vector<FileIdentity>& list, const FileIdentity& identity) {
    return std::find(list.begin(), list.end(), identity) != list.end();
}

} // namespace platform
