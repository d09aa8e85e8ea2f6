#include "platform/posix/UniqueRename.h"

#include "platform/posix/SystemCalls.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

bool makePlaceholder(const ItemPlace& place, bool folder) {
    const char* const name = place.name.c_str();
    if (folder)
        return ::mkdirat(place.folder.get(), name, S_IRWXU) == 0;
    return FileDescriptor(
               ::openat(place.folder.get(), name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR))
        .isOpen();
}

} // namespace

int renameOverPlaceholder(const ItemPlace& from, const ItemPlace& to) {
    struct stat status {};
    if (::fstatat(from.folder.get(), from.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return errno;
    const bool folder = S_ISDIR(status.st_mode);
    if (!makePlaceholder(to, folder))
        return errno;
    if (::renameat(from.folder.get(), from.name.c_str(), to.folder.get(), to.name.c_str()) == 0)
        return 0;
    const int result = errno;
    ::unlinkat(to.folder.get(), to.name.c_str(), folder ? AT_REMOVEDIR : 0);
    return result;
}

int renameUnique(const ItemPlace& from, const ItemPlace& to) {
    if (renameExclusively(from.folder.get(), from.name.c_str(), to.folder.get(), to.name.c_str()))
        return 0;
    return errno == ENOTSUP ? renameOverPlaceholder(from, to) : errno;
}

} // namespace platform
