#include "platform/posix/FolderListing.h"

#include "foundation/PathString.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <utility>

namespace platform {

namespace {

struct CloseStream {
    void operator()(DIR* stream) const { ::closedir(stream); }
};

// Not every file system tells the type in its listing. False when the entry is gone.
bool findType(int folder, FolderEntry& entry) {
    if (entry.type != 0)
        return true;
    struct stat status {};
    if (::fstatat(folder, entry.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    entry.type = status.st_mode & S_IFMT;
    return true;
}

} // namespace

FileDescriptor openFolderIn(int folder, const std::string& name) {
    return FileDescriptor(::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

std::optional<std::vector<FolderEntry>> listFolder(int folder) {
    // A descriptor of its own, so that the listing begins at the first entry.
    FileDescriptor own = openFolderIn(folder, ".");
    if (!own.isOpen())
        return std::nullopt;
    const std::unique_ptr<DIR, CloseStream> stream(::fdopendir(own.get()));
    if (!stream)
        return std::nullopt;
    own.release();
    std::vector<FolderEntry> entries;
    while (true) {
        errno = 0;
        const dirent* const found = ::readdir(stream.get());
        if (found == nullptr)
            return errno == 0 ? std::optional(std::move(entries)) : std::nullopt;
        FolderEntry entry{static_cast<const char*>(found->d_name), static_cast<mode_t>(DTTOIF(found->d_type))};
        if (!foundation::path::isDots(entry.name) && findType(folder, entry))
            entries.push_back(std::move(entry));
    }
}

std::vector<FolderEntry> entriesOf(int folder, FileAccess access, const std::string& path) {
    auto entries = listFolder(folder);
    if (!entries)
        throwErrno(access, path);
    return *std::move(entries);
}

} // namespace platform
