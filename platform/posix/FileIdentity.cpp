#include "platform/posix/FileIdentity.h"

#include "platform/posix/SystemCalls.h"

#include <algorithm>

namespace platform {

FileIdentity identityOf(const struct stat& status) {
    return {status.st_dev, status.st_ino};
}

FileIdentity identityOf(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 ? identityOf(status) : FileIdentity{};
}

std::vector<FileIdentity> ancestry(int folder) {
    std::vector<FileIdentity> chain;
    FileDescriptor at = openPlace(folder, ".", Links::Followed);
    struct stat status {};
    while (at.isOpen() && ::fstat(at.get(), &status) == 0) {
        const FileIdentity identity = identityOf(status);
        if (!chain.empty() && chain.back() == identity)
            break; // the parent of "/" is "/"
        chain.push_back(identity);
        at = openPlace(at.get(), "..", Links::Followed);
    }
    return chain;
}

bool isVolumeRoot(int folder, dev_t parent) {
    if (isMountRoot(folder))
        return true;
    struct stat status {};
    return ::fstat(folder, &status) != 0 || status.st_dev != parent;
}

bool contains(const std::vector<FileIdentity>& list, const FileIdentity& identity) {
    return std::find(list.begin(), list.end(), identity) != list.end();
}

} // namespace platform
