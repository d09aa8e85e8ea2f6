#include "FolderTree.h"

#include "Failure.h"

#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace hdiutil {
namespace {

constexpr int openFlags = O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

std::string descriptorPath(const FileDescriptor& file) {
    return "/proc/self/fd/" + std::to_string(file.get());
}

} // namespace

std::vector<std::string> entryNames(int folder) {
    // A descriptor of its own, because reading moves the position that duplicates share.
    const int own = ::openat(folder, ".", O_RDONLY | openFlags);
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(own < 0 ? nullptr : ::fdopendir(own), ::closedir);
    if (!stream)
        throw systemFailure("could not list a folder");
    std::vector<std::string> names;
    errno = 0;
    while (const dirent* entry = ::readdir(stream.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    if (errno != 0)
        throw systemFailure("could not list a folder");
    return names;
}

FileDescriptor openFolder(int parent, const std::string& name) {
    return FileDescriptor(::openat(parent, name.c_str(), O_RDONLY | openFlags));
}

TreeRemoval::TreeRemoval(int folder) : _fileSystem(fileSystemOf(folder)) {}

void TreeRemoval::removeContents(int folder) {
    try {
        for (const std::string& name : entryNames(folder))
            removeEntry(folder, name);
    } catch (const Failure&) {
        note(EIO);
    }
}

void TreeRemoval::removeEntry(int folder, const std::string& name) {
    if (::unlinkat(folder, name.c_str(), 0) == 0 || errno == ENOENT)
        return;
    if (errno != EISDIR)
        return note(errno);
    const FileDescriptor child = openForRemoval(folder, name);
    if (!child)
        return;
    removeContents(child.get());
    if (::unlinkat(folder, name.c_str(), AT_REMOVEDIR) != 0)
        note(errno);
}

TreeRemoval::FileSystem TreeRemoval::fileSystemOf(int folder) {
    struct statx status {};
    if (::statx(folder, "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_MNT_ID, &status) != 0)
        throw systemFailure("could not look at a folder");
    const std::uint64_t mount = (status.stx_mask & STATX_MNT_ID) != 0 ? status.stx_mnt_id : 0;
    return {makedev(status.stx_dev_major, status.stx_dev_minor), mount};
}

FileDescriptor TreeRemoval::openForRemoval(int parent, const std::string& name) {
    // Opened as a mere place first: a folder without permissions cannot be opened for reading until it has some.
    const FileDescriptor place(::openat(parent, name.c_str(), O_PATH | openFlags));
    struct stat status {};
    if (!place || ::fstat(place.get(), &status) != 0) {
        note(errno);
        return {};
    }
    if (!(fileSystemOf(place.get()) == _fileSystem)) {
        note(EXDEV);
        return {};
    }
    if ((status.st_mode & S_IRWXU) != S_IRWXU)
        ::chmod(descriptorPath(place).c_str(), (status.st_mode & 07777) | S_IRWXU);
    FileDescriptor folder = openFolder(place.get(), ".");
    if (!folder)
        note(errno);
    return folder;
}

void TreeRemoval::note(int error) {
    if (error != ENOENT && _firstError == 0)
        _firstError = error;
}

} // namespace hdiutil
