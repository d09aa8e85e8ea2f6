#include "platform/posix/FileCopy.h"

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/FileFailure.h"
#include "platform/posix/SystemCalls.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

constexpr auto reading = FileAccess::Reading;
constexpr auto writing = FileAccess::Writing;

constexpr off_t smallestBuffer = 4096;
constexpr off_t largestBuffer = 262144;

void copyRest(int from, int to, const std::string& fromPath, const std::string& toPath, off_t size) {
    std::vector<char> buffer(static_cast<std::size_t>(std::clamp(size, smallestBuffer, largestBuffer)));
    while (true) {
        const ssize_t count = readSome(from, buffer.data(), buffer.size());
        if (count == 0)
            return;
        if (count < 0)
            throwErrno(reading, fromPath);
        if (!writeAll(to, {buffer.data(), static_cast<std::size_t>(count)}))
            throwErrno(writing, toPath);
    }
}

// Some file systems call files empty that are not, or stop early without an error: only a file that came over in its
// whole size is taken to be complete.
void copyData(int from, int to, const std::string& fromPath, const std::string& toPath, off_t size) {
    if (size == 0 || copyDataInSystem(from, to) < size)
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

} // namespace

void applyTraits(int descriptor, const struct stat& traits, const std::string& path) {
    // A change of owner takes mode bits away, so it comes first. Where it is refused, the copy stays the superuser's.
    if (::geteuid() == 0 && ::fchown(descriptor, traits.st_uid, traits.st_gid) != 0 && errno != EPERM &&
        errno != EINVAL)
        throwErrno(writing, path);
    // The sticky bit of a folder guards its entries; on a file it means nothing.
    const mode_t mode = traits.st_mode & (S_ISDIR(traits.st_mode) ? mode_t{01777} : mode_t{0777});
    const auto times = timesOf(traits);
    if (::fchmod(descriptor, mode) != 0 || ::futimens(descriptor, times.data()) != 0)
        throwErrno(writing, path);
}

void copyRegularFile(const CopyEnd& from, const CopyEnd& to, MadeItem* made) {
    struct stat traits {};
    const FileDescriptor source = openSource(from, traits);
    FileDescriptor copy = cloneFile(source.get(), to.folder, to.name);
    const bool isClone = copy.isOpen();
    if (!isClone)
        copy = FileDescriptor(
            ::openat(to.folder, to.name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!copy.isOpen())
        throwErrno(writing, to.path);
    if (made != nullptr)
        *made = identityOf(copy.get());
    if (!isClone) {
        copyData(source.get(), copy.get(), from.path, to.path, traits.st_size);
        copyExtendedAttributes(source.get(), copy.get(), from.path, to.path);
    }
    applyTraits(copy.get(), traits, to.path);
    if (const int failed = copy.close(); failed != 0)
        throw FileFailure{writing, to.path, failed, {}};
}

void copySymbolicLink(const CopyEnd& from, const CopyEnd& to, MadeItem* made) {
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
    struct stat link {};
    if (made != nullptr && ::fstatat(to.folder, to.name, &link, AT_SYMLINK_NOFOLLOW) == 0)
        *made = identityOf(link);
    if (::geteuid() == 0 && ::fchownat(to.folder, to.name, traits.st_uid, traits.st_gid, AT_SYMLINK_NOFOLLOW) != 0 &&
        errno != EPERM && errno != EINVAL)
        throwErrno(writing, to.path);
    const auto times = timesOf(traits);
    if (::utimensat(to.folder, to.name, times.data(), AT_SYMLINK_NOFOLLOW) != 0)
        throwErrno(writing, to.path);
}

} // namespace platform
