#include "platform/posix/FolderListing.h"

#include "platform/posix/FileDescriptor.h"
#include "platform/posix/PathText.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

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

bool listFolder(int folder, std::vector<FolderEntry>& entries) {
    // A descriptor of its own, so that the listing begins at the first entry.
    FileDescriptor own(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!own.isOpen())
        return false;
    const std::unique_ptr<DIR, CloseStream> stream(::fdopendir(own.get()));
    if (!stream)
        return false;
    own.release();
    while (true) {
        errno = 0;
        const dirent* const found = ::readdir(stream.get());
        if (found == nullptr)
            return errno == 0;
        FolderEntry entry{static_cast<const char*>(found->d_name), static_cast<mode_t>(DTTOIF(found->d_type))};
        if (!isDots(entry.name) && findType(folder, entry))
            entries.push_back(std::move(entry));
    }
}

} // namespace platform
