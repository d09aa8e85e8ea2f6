#include "platform/posix/FileFailure.h"
#include "platform/posix/SystemCalls.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <linux/close_range.h>
#include <optional>
#include <sys/prctl.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

constexpr std::size_t largestPiece = std::size_t{1} << 30;
// Of all extended attributes only those with this prefix belong to users.
constexpr const char* userAttributes = "user.";

// Names or a value, whose size may change between asking for it and reading. Nothing where there is none.
template <class Read>
std::optional<std::vector<char>> readAttribute(Read read, const std::string& path) {
    std::vector<char> bytes(256);
    while (true) {
        const ssize_t size = read(bytes.data(), bytes.size());
        if (size >= 0) {
            bytes.resize(static_cast<std::size_t>(size));
            return bytes;
        }
        if (errno == EOPNOTSUPP || errno == ENODATA)
            return std::nullopt;
        if (errno != ERANGE)
            throwErrno(FileAccess::Reading, path);
        bytes.resize(bytes.size() * 4);
    }
}

} // namespace

bool makePipe(FileDescriptor& readEnd, FileDescriptor& writeEnd) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return false;
    readEnd = FileDescriptor(ends[0]);
    writeEnd = FileDescriptor(ends[1]);
    return true;
}

FileDescriptor openPlace(int folder, const char* name, Links links) {
    const int noLinks = links == Links::Refused ? O_NOFOLLOW : 0;
    return FileDescriptor(::openat(folder, name, O_PATH | O_DIRECTORY | O_CLOEXEC | noLinks));
}

// A place has no descriptor that fchmod takes.
bool changeModeOfPlace(int place, mode_t mode) {
    return ::chmod(("/proc/self/fd/" + std::to_string(place)).c_str(), mode) == 0;
}

bool isMountRoot(int folder) {
    struct statx status {};
    return ::statx(folder, "", AT_EMPTY_PATH, STATX_BASIC_STATS, &status) == 0 &&
           (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

bool renameExclusively(int fromFolder, const char* from, int toFolder, const char* to) {
    if (::renameat2(fromFolder, from, toFolder, to, RENAME_NOREPLACE) == 0)
        return true;
    // EINVAL is also the answer for a folder that would move into itself; any other way to rename finds that out too.
    if (errno == EINVAL || errno == ENOSYS)
        errno = ENOTSUP;
    return false;
}

// The call that copies pieces lets the file system share them.
FileDescriptor cloneFile(int /*from*/, int /*toFolder*/, const char* /*to*/) {
    return FileDescriptor();
}

ssize_t copyPiece(int from, int to, std::size_t length) {
    ssize_t count = 0;
    do
        count = ::copy_file_range(from, nullptr, to, nullptr, length, 0);
    while (count < 0 && errno == EINTR);
    return count;
}

off_t copyDataInSystem(int from, int to) {
    off_t total = 0;
    while (true) {
        const ssize_t count = copyPiece(from, to, largestPiece);
        if (count <= 0)
            return total;
        total += count;
    }
}

void copyExtendedAttributes(int from, int to, const std::string& fromPath, const std::string& toPath) {
    const auto names =
        readAttribute([from](char* bytes, std::size_t size) { return ::flistxattr(from, bytes, size); }, fromPath);
    for (std::size_t at = 0; names && at < names->size();) {
        const std::string name(names->data() + at);
        at += name.size() + 1;
        if (name.rfind(userAttributes, 0) != 0)
            continue;
        const auto value = readAttribute(
            [&](char* bytes, std::size_t size) { return ::fgetxattr(from, name.c_str(), bytes, size); }, fromPath);
        if (!value || ::fsetxattr(to, name.c_str(), value->data(), value->size(), 0) == 0)
            continue;
        if (errno == EOPNOTSUPP)
            return;
        throwErrno(FileAccess::Writing, toPath);
    }
}

int removeAttribute(const char* path, const char* name, Links links) {
    const std::string ownName = std::string(userAttributes) + name;
    return links == Links::Refused ? ::lremovexattr(path, ownName.c_str()) : ::removexattr(path, ownName.c_str());
}

std::array<timespec, 2> timesOf(const struct stat& status) {
    return {status.st_atim, status.st_mtim};
}

char** environment() {
    return environ;
}

pid_t forkAgain() {
    return ::_Fork();
}

void endWithStarter() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
}

// An old kernel leaves them open.
void closeInPrograms() {
    ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
}

} // namespace platform
