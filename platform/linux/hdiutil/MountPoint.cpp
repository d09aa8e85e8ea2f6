#include "MountPoint.h"

#include "Failure.h"
#include "FolderTree.h"

#include <climits>
#include <cstdio>
#include <fcntl.h>

namespace hdiutil {
namespace {

constexpr mode_t attachedMode = 01555;
constexpr mode_t modeBits = 07777;

// Fails if the new name exists. Some file systems cannot promise that; there it is looked for first, in a folder that
// nobody else writes to.
int renameNew(int from, int to, const std::string& name) {
    if (::renameat2(from, name.c_str(), to, name.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    struct stat status {};
    if (::fstatat(to, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
        return EEXIST;
    return ::renameat(from, name.c_str(), to, name.c_str()) == 0 ? 0 : errno;
}

} // namespace

MountPoint::MountPoint(const std::string& path) {
    // With a slash at its end, a link would be followed after all.
    const std::size_t end = path.find_last_not_of('/');
    const std::string trimmed = path.substr(0, end == std::string::npos ? 0 : end + 1);
    const std::size_t slash = trimmed.rfind('/');
    _name = trimmed.substr(slash + 1);
    if (_name.empty() || _name == "." || _name == "..")
        throw Failure(path + " cannot be a mount point");
    const std::string parent = slash == std::string::npos ? "." : trimmed.substr(0, slash + 1);
    _parent = FileDescriptor(::open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (_parent)
        _folder = openFolder(_parent.get(), _name);
    if (!_folder || ::fstat(_folder.get(), &_status) != 0)
        throw systemFailure("the mount point " + path + " is not a folder that can be used");
    if (_status.st_uid != ::geteuid())
        throw Failure("the mount point " + path + " belongs to another user");
}

int MountPoint::claim() {
    if (isMarked())
        throw Failure("the mount point is in use");
    if (!entryNames(_folder.get()).empty())
        throw Failure("the mount point is not empty");
    const std::string name = ".attach." + std::to_string(::getpid());
    if (::mkdirat(_folder.get(), name.c_str(), S_IRWXU) != 0)
        throw systemFailure("could not write to the mount point");
    _stagingName = name;
    _staging = openFolder(_folder.get(), name);
    if (!_staging)
        throw systemFailure("could not write to the mount point");
    // Of two that found the folder empty at the same time, neither goes on.
    if (entryNames(_folder.get()).size() != 1)
        throw Failure("the mount point is in use");
    return _staging.get();
}

void MountPoint::publish(int folder) {
    for (const std::string& name : entryNames(folder)) {
        if (const int error = renameNew(folder, _folder.get(), name); error != 0)
            throw systemFailure("could not move the volume into place", error);
        _published.push_back(name);
    }
}

void MountPoint::mark() {
    TreeRemoval removal(_folder.get());
    removal.removeEntry(_folder.get(), _stagingName);
    if (removal.firstError() != 0 || ::fchmod(_folder.get(), attachedMode) != 0)
        throw systemFailure("could not finish the mount point",
                            removal.firstError() != 0 ? removal.firstError() : errno);
    _stagingName.clear();
}

int MountPoint::restore() noexcept {
    if (_stagingName.empty() && !_staging)
        return 0;
    try {
        ::fchmod(_folder.get(), _status.st_mode & modeBits);
        TreeRemoval removal(_folder.get());
        if (!_stagingName.empty())
            removal.removeEntry(_folder.get(), _stagingName);
        for (const std::string& name : _published)
            removal.removeEntry(_folder.get(), name);
        return removal.firstError();
    } catch (const std::exception&) {
        return EIO;
    }
}

void MountPoint::detach() {
    if (!isMarked())
        throw Failure("nothing is attached there");
    TreeRemoval removal(_folder.get());
    ::fchmod(_folder.get(), S_IRWXU);
    removal.removeContents(_folder.get());
    const int error = removal.firstError() != 0 ? removal.firstError() : removeFolder();
    if (error != 0) {
        // Marked again, so that the rest can be detached another time.
        ::fchmod(_folder.get(), attachedMode);
        throw systemFailure("could not remove everything", error);
    }
}

int MountPoint::removeFolder() {
    struct stat status {};
    if (::fstatat(_parent.get(), _name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT ? 0 : errno;
    if (status.st_dev != _status.st_dev || status.st_ino != _status.st_ino)
        return 0; // moved away or replaced meanwhile: no longer this one
    return ::unlinkat(_parent.get(), _name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT ? 0 : errno;
}

std::string MountPoint::resolvedPath() const {
    std::string path(PATH_MAX, '\0');
    const std::string link = "/proc/self/fd/" + std::to_string(_folder.get());
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
    path.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return path;
}

bool MountPoint::isMarked() const {
    return (_status.st_mode & modeBits) == attachedMode;
}

} // namespace hdiutil
