// Stand-ins for Darwin's calls, on Linux's. See README.md.

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <linux/fs.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

#include "tests/support/darwin/copyfile.h"
#include "tests/support/darwin/crt_externs.h"
#include "tests/support/darwin/sys/attr.h"
#include "tests/support/darwin/sys/clonefile.h"
#include "tests/support/darwin/sys/stdio.h"

struct CopyfileState {
    off_t copied = 0;
};

namespace {

// Names of a user's attributes have a prefix here.
const std::string userAttributes = "user.";

int copyAll(int from, int to, CopyfileState* state) {
    while (true) {
        const ssize_t count = ::sendfile(to, from, nullptr, 1 << 20);
        if (count <= 0)
            return static_cast<int>(count);
        if (state != nullptr)
            state->copied += count;
    }
}

int copyAttributes(int from, int to) {
    std::vector<char> names(65536);
    std::vector<char> value(65536);
    const ssize_t length = ::flistxattr(from, names.data(), names.size());
    for (ssize_t at = 0; at < length;) {
        const std::string name(names.data() + at);
        at += static_cast<ssize_t>(name.size()) + 1;
        if (name.rfind(userAttributes, 0) != 0)
            continue;
        const ssize_t size = ::fgetxattr(from, name.c_str(), value.data(), value.size());
        if (size < 0 || ::fsetxattr(to, name.c_str(), value.data(), static_cast<std::size_t>(size), 0) != 0)
            return -1;
    }
    return length < 0 && errno != ENOTSUP ? -1 : 0;
}

} // namespace

copyfile_state_t copyfile_state_alloc() {
    return new CopyfileState;
}

int copyfile_state_free(copyfile_state_t state) {
    delete state;
    return 0;
}

int copyfile_state_get(copyfile_state_t state, std::uint32_t flag, void* destination) {
    if (flag != COPYFILE_STATE_COPIED)
        return -1;
    *static_cast<off_t*>(destination) = state->copied;
    return 0;
}

int fcopyfile(int from, int to, copyfile_state_t state, copyfile_flags_t flags) {
    if ((flags & COPYFILE_DATA) != 0 && copyAll(from, to, state) != 0)
        return -1;
    return (flags & COPYFILE_XATTR) != 0 ? copyAttributes(from, to) : 0;
}

char*** _NSGetEnviron() {
    return &environ;
}

int fgetattrlist(int descriptor, void* list, void* buffer, std::size_t size, unsigned int /*options*/) {
    const auto* wanted = static_cast<const attrlist*>(list);
    struct statx status {};
    if (wanted->dirattr != ATTR_DIR_MOUNTSTATUS || size < 2 * sizeof(std::uint32_t)) {
        errno = EINVAL;
        return -1;
    }
    if (::statx(descriptor, "", AT_EMPTY_PATH, STATX_BASIC_STATS, &status) != 0)
        return -1;
    auto* answer = static_cast<std::uint32_t*>(buffer);
    answer[0] = 2 * sizeof(std::uint32_t);
    answer[1] = (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0 ? DIR_MNTSTATUS_MNTPOINT : 0;
    return 0;
}

// Clones where the volume here can, which few do.
int fclonefileat(int from, int toFolder, const char* to, std::uint32_t /*flags*/) {
    struct stat status {};
    if (::fstat(from, &status) != 0)
        return -1;
    const int clone = ::openat(toFolder, to, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, status.st_mode & 0777);
    if (clone < 0)
        return -1;
    const bool cloned = ::ioctl(clone, FICLONE, from) == 0 && copyAttributes(from, clone) == 0;
    ::close(clone);
    if (cloned)
        return 0;
    ::unlinkat(toFolder, to, 0);
    errno = ENOTSUP;
    return -1;
}

int renameatx_np(int fromFolder, const char* from, int toFolder, const char* to, unsigned int flags) {
    if (::renameat2(fromFolder, from, toFolder, to, flags == RENAME_EXCL ? RENAME_NOREPLACE : ~0U) == 0)
        return 0;
    if (errno == EINVAL || errno == ENOSYS)
        errno = ENOTSUP;
    return -1;
}

extern "C" int darwin_removexattr(const char* path, const char* name, int options) {
    const std::string ownName = userAttributes + name;
    return options != 0 ? ::lremovexattr(path, ownName.c_str()) : ::removexattr(path, ownName.c_str());
}
