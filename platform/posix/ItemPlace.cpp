#include "platform/posix/ItemPlace.h"

#include "foundation/PathString.h"
#include "platform/posix/SystemCalls.h"

#include <cerrno>
#include <fcntl.h>

namespace platform {

ItemPlace ItemPlace::of(const std::string& path, FileAccess access) {
    if (path.empty())
        throw FileFailure{access, path, ENOENT, {}};
    if (!foundation::path::isPath(path))
        throw FileFailure{access, path, EINVAL, "the path has a zero byte"};
    ItemPlace place;
    place.path = path;
    place.name = foundation::path::lastPathComponent(path);
    std::string folder = foundation::path::deletingLastPathComponent(path);
    if (folder.empty())
        folder += '.';
    if (place.name == "/")
        place.name.front() = '.';
    place.folder = openPlace(AT_FDCWD, folder.c_str(), Links::Followed);
    if (!place.folder.isOpen())
        throwErrno(access, path);
    return place;
}

struct stat ItemPlace::status(FileAccess access) const {
    struct stat status {};
    if (::fstatat(folder.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        throwErrno(access, path);
    return status;
}

} // namespace platform
