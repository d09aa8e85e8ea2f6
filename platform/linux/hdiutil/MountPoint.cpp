#include "platform/linux/hdiutil/MountPoint.h"

#include "foundation/PathString.h"
#include "platform/linux/PathFacts.h"
#include "platform/linux/hdiutil/Failure.h"
#include "platform/posix/FileIdentity.h"
#include "platform/posix/SystemCalls.h"
#include "platform/posix/TreeRemoval.h"
#include "platform/posix/UniqueRename.h"

#include <fcntl.h>
#include <unistd.h>

namespace hdiutil {
namespace {

using platform::FileAccess;
using platform::FileDescriptor;
using platform::ItemPlace;

constexpr mode_t attachedMode = 01555;
constexpr mode_t modeBits = 07777;

ItemPlace placeIn(int folder, const std::string& name) {
    return {platform::openPlace(folder, ".", platform::Links::Refused), name, name};
}

} // namespace

MountPoint::MountPoint(const std::string& path) : place_(ItemPlace::of(path, FileAccess::Reading)) {
    if (foundation::path::isDots(place_.name))
        throw Failure(path + " cannot be a mount point");
    folder_ = platform::openFolderIn(place_.folder.get(), place_.name);
    if (!folder_.isOpen() || ::fstat(folder_.get(), &status_) != 0)
        throw systemFailure("the mount point " + path + " is not a folder that can be used");
    if (status_.st_uid != ::geteuid())
        throw Failure("the mount point " + path + " belongs to another user");
}

FileDescriptor MountPoint::claim() {
    if (isMarked())
        throw Failure("the mount point is in use");
    if (!entries().empty())
        throw Failure("the mount point is not empty");
    const std::string name = ".attach." + std::to_string(::getpid());
    if (::mkdirat(folder_.get(), name.c_str(), S_IRWXU) != 0)
        throw systemFailure("could not write to the mount point");
    privateName_ = name;
    made_.push_back(name);
    FileDescriptor folder = platform::openFolderIn(folder_.get(), name);
    if (!folder.isOpen())
        throw systemFailure("could not write to the mount point");
    // Of two that found the folder empty at the same time, neither goes on.
    if (entries().size() != 1)
        throw Failure("the mount point is in use");
    return folder;
}

void MountPoint::publish(int folder) {
    ItemPlace from = placeIn(folder, {});
    ItemPlace to = placeOf({});
    for (const platform::FolderEntry& entry : platform::entriesOf(folder, FileAccess::Reading, "the volume")) {
        from.name = to.name = entry.name;
        if (const int error = platform::renameUnique(from, to); error != 0)
            throw systemFailure("could not move the volume into place", error);
        made_.push_back(entry.name);
    }
}

void MountPoint::mark() {
    platform::removeItem(placeOf(privateName_));
    std::erase(made_, privateName_);
    if (::fchmod(folder_.get(), attachedMode) != 0)
        throw systemFailure("could not finish the mount point");
}

bool MountPoint::restore() noexcept {
    if (privateName_.empty())
        return true;
    ::fchmod(folder_.get(), status_.st_mode & modeBits);
    bool allGone = true;
    for (const std::string& name : made_) {
        try {
            platform::removeItem(placeOf(name));
        } catch (...) {
            // What is in the way is still there to be seen; the rest can go.
            allGone = false;
        }
    }
    return allGone;
}

void MountPoint::detach() {
    if (!isMarked())
        throw Failure("nothing is attached there");
    try {
        platform::removeIfSame(place_, platform::identityOf(status_));
    } catch (...) {
        // Marked again, so that the rest can be detached another time.
        ::fchmod(folder_.get(), attachedMode);
        throw;
    }
}

void MountPoint::removeIfEmpty() {
    struct stat found {};
    if (::fstatat(place_.folder.get(), place_.name.c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0 &&
        platform::identityOf(found) == platform::identityOf(status_))
        ::unlinkat(place_.folder.get(), place_.name.c_str(), AT_REMOVEDIR);
}

std::string MountPoint::resolvedPath() const {
    return platform::linkTarget("/proc/self/fd/" + std::to_string(folder_.get()));
}

bool MountPoint::isMarked() const {
    return (status_.st_mode & modeBits) == attachedMode;
}

ItemPlace MountPoint::placeOf(const std::string& name) const {
    return placeIn(folder_.get(), name);
}

std::vector<platform::FolderEntry> MountPoint::entries() const {
    return platform::entriesOf(folder_.get(), FileAccess::Reading, place_.path);
}

} // namespace hdiutil
