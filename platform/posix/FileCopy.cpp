#include "platform/posix/FileCopy.h"

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/FileFailure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

constexpr auto reading = FileAccess::Reading;
constexpr auto writing = FileAccess::Writing;

constexpr std::size_t cloneChunk = std::size_t{1} << 30;
constexpr off_t smallestBuffer = 4096;
constexpr off_t largestBuffer = 262144;

// As much as the kernel copies by itself; the number of bytes. Whatever stops it, the offsets of both files stand
// behind the last byte copied, and plain reading and writing goes on from there or finds out which side fails.
off_t copyInKernel(int from, int to) {
    off_t total = 0;
    while (true) {
        const ssize_t count = ::copy_file_range(from, nullptr, to, nullptr, cloneChunk, 0);
        if (count > 0)
            total += count;
        else if (count == 0 || errno != EINTR)
            return total;
    }
}

void writeAll(int to, const char* bytes, std::size_t size, const std::string& path) {
    while (size > 0) {
        const ssize_t count = ::write(to, bytes, size);
        if (count < 0 && errno != EINTR)
            throwErrno(writing, path);
        if (count <= 0)
            continue;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
}

void copyRest(int from, int to, const std::string& fromPath, const std::string& toPath, off_t size) {
    std::vector<char> buffer(static_cast<std::size_t>(std::clamp(size, smallestBuffer, largestBuffer)));
    while (true) {
        const ssize_t count = ::read(from, buffer.data(), buffer.size());
        if (count == 0)
            return;
        if (count < 0 && errno != EINTR)
            throwErrno(reading, fromPath);
        if (count > 0)
            writeAll(to, buffer.data(), static_cast<std::size_t>(count), toPath);
    }
}

// Some file systems call files empty that are not, or stop early without an error: only a file that came over in its
// whole size is taken to be complete.
void copyData(int from, int to, const std::string& fromPath, const std::string& toPath, off_t size) {
    if (size == 0 || copyInKernel(from, to) < size)
        copyRest(from, to, fromPath, toPath, size);
}

// Opens without waiting, so that an item that became a FIFO a moment ago is no trap.
FileDescriptor openSource(const CopyEnd& from, struct stat& traits) {
    FileDescriptor file(::openat(from.folder, from.name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen() || ::fstat(file.get(), &traits) != 0)
        throwErrno(reading, from.path);
    if (!S_ISREG(traits.st_mode))
        throw FileFailure{reading, from.path, EOPNOTSUPP, {}};
    return file;
}

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
            throwErrno(reading, path);
        bytes.resize(bytes.size() * 4);
    }
}

} // namespace

void copyExtendedAttributes(int from, int to, const std::string& fromPath, const std::string& toPath) {
    const auto names =
        readAttribute([from](char* bytes, std::size_t size) { return ::flistxattr(from, bytes, size); }, fromPath);
    for (std::size_t at = 0; names && at < names->size();) {
        const std::string name(names->data() + at);
        at += name.size() + 1;
        if (name.rfind("user.", 0) != 0)
            continue;
        const auto value = readAttribute(
            [&](char* bytes, std::size_t size) { return ::fgetxattr(from, name.c_str(), bytes, size); }, fromPath);
        if (!value || ::fsetxattr(to, name.c_str(), value->data(), value->size(), 0) == 0)
            continue;
        if (errno == EOPNOTSUPP)
            return;
        throwErrno(writing, toPath);
    }
}

void applyTraits(int descriptor, const struct stat& traits, const std::string& path) {
    // A change of owner takes mode bits away, so it comes first. Where it is refused, the copy stays the superuser's.
    if (::geteuid() == 0 && ::fchown(descriptor, traits.st_uid, traits.st_gid) != 0 && errno != EPERM &&
        errno != EINVAL)
        throwErrno(writing, path);
    // The sticky bit of a folder guards its entries; on a file it means nothing.
    const mode_t mode = traits.st_mode & (S_ISDIR(traits.st_mode) ? mode_t{01777} : mode_t{0777});
    const std::array<timespec, 2> times{traits.st_atim, traits.st_mtim};
    if (::fchmod(descriptor, mode) != 0 || ::futimens(descriptor, times.data()) != 0)
        throwErrno(writing, path);
}

void copyRegularFile(const CopyEnd& from, const CopyEnd& to, bool* made) {
    struct stat traits {};
    const FileDescriptor source = openSource(from, traits);
    FileDescriptor copy(
        ::openat(to.folder, to.name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!copy.isOpen())
        throwErrno(writing, to.path);
    if (made != nullptr)
        *made = true;
    copyData(source.get(), copy.get(), from.path, to.path, traits.st_size);
    copyExtendedAttributes(source.get(), copy.get(), from.path, to.path);
    applyTraits(copy.get(), traits, to.path);
    if (const int failed = copy.close(); failed != 0)
        throw FileFailure{writing, to.path, failed, {}};
}

void copySymbolicLink(const CopyEnd& from, const CopyEnd& to, bool* made) {
    struct stat traits {};
    if (::fstatat(from.folder, from.name, &traits, AT_SYMLINK_NOFOLLOW) != 0)
        throwErrno(reading, from.path);
    std::vector<char> target(4096);
    const ssize_t length = ::readlinkat(from.folder, from.name, target.data(), target.size());
    if (length < 0)
        throwErrno(reading, from.path);
    const std::string text(target.data(), static_cast<std::size_t>(length));
    if (::symlinkat(text.c_str(), to.folder, to.name) != 0)
        throwErrno(writing, to.path);
    if (made != nullptr)
        *made = true;
    if (::geteuid() == 0 && ::fchownat(to.folder, to.name, traits.st_uid, traits.st_gid, AT_SYMLINK_NOFOLLOW) != 0 &&
        errno != EPERM && errno != EINVAL)
        throwErrno(writing, to.path);
    const std::array<timespec, 2> times{traits.st_atim, traits.st_mtim};
    if (::utimensat(to.folder, to.name, times.data(), AT_SYMLINK_NOFOLLOW) != 0)
        throwErrno(writing, to.path);
}

} // namespace platform
