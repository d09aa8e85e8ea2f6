#include "platform/posix/PosixFileQueries.h"

#include "foundation/PathString.h"
#include "platform/posix/FolderListing.h"
#include "platform/posix/SystemCalls.h"
#include "platform/posix/TreeWalk.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

std::optional<struct stat> statusOf(const std::string& path, int flags) {
    struct stat status {};
    if (!foundation::path::isPath(path) || ::fstatat(AT_FDCWD, path.c_str(), &status, flags) != 0)
        return std::nullopt;
    return status;
}

FileType typeOf(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG:
        return FileType::Regular;
    case S_IFDIR:
        return FileType::Directory;
    case S_IFLNK:
        return FileType::SymbolicLink;
    default:
        return FileType::Other;
    }
}

// Lists all entries; folders that cannot be read are listed and not entered.
class EntryCollector : public FolderVisitor {
public:
    std::vector<std::string> enterFolder(FolderCursor& at) override {
        std::vector<FolderEntry> entries = listFolder(at.descriptor()).value_or(std::vector<FolderEntry>());
        std::vector<std::string> folders;
        for (FolderEntry& entry : entries) {
            found.push_back(at.pathOf(entry.name));
            if (entry.type == S_IFDIR)
                folders.push_back(std::move(entry.name));
        }
        return folders;
    }

    FileDescriptor openFolder(FolderCursor& at, const std::string& name) override {
        FileDescriptor folder = at.open(name);
        if (folder.isOpen() && isVolumeRoot(folder.get(), at.status().st_dev))
            folder.close();
        return folder;
    }

    void leaveFolder(FolderCursor& /*parent*/, const std::string& /*name*/) override {}

    std::vector<std::string> found;
};

} // namespace

bool PosixFileQueries::fileExists(const std::string& path) {
    return statusOf(path, 0).has_value();
}

bool PosixFileQueries::isReadableFile(const std::string& path) {
    return foundation::path::isPath(path) && ::access(path.c_str(), R_OK) == 0;
}

bool PosixFileQueries::isWritableFile(const std::string& path) {
    return foundation::path::isPath(path) && ::access(path.c_str(), W_OK) == 0;
}

std::optional<std::vector<std::string>> PosixFileQueries::contentsOfDirectory(const std::string& path) {
    if (!foundation::path::isPath(path))
        return std::nullopt;
    const FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    auto entries = listFolder(folder.get());
    if (!entries)
        return std::nullopt;
    std::vector<std::string> names;
    names.reserve(entries->size());
    for (FolderEntry& entry : *entries)
        names.push_back(std::move(entry.name));
    return names;
}

std::vector<std::string> PosixFileQueries::entriesBelow(const std::string& path) {
    EntryCollector collector;
    if (!foundation::path::isPath(path))
        return {};
    FileDescriptor folder = openFolderIn(AT_FDCWD, path);
    if (!folder.isOpen())
        return {};
    try {
        FolderCursor at(std::move(folder), {}, FileAccess::Reading);
        walkTree(at, collector);
    } catch (const FileFailure&) {
        // The tree changes meanwhile; what was found by then is the answer.
    }
    return std::move(collector.found);
}

std::optional<FileAttributes> PosixFileQueries::attributesOfItem(const std::string& path) {
    const auto status = statusOf(path, AT_SYMLINK_NOFOLLOW);
    if (!status)
        return std::nullopt;
    return FileAttributes{typeOf(status->st_mode)};
}

std::optional<FileOwner> PosixFileQueries::ownerOfItem(const std::string& path) {
    const auto status = statusOf(path, 0);
    if (!status)
        return std::nullopt;
    return FileOwner{status->st_uid, status->st_gid};
}

std::optional<ItemIdentity> PosixFileQueries::identityOfItem(const std::string& path) {
    const auto status = statusOf(path, AT_SYMLINK_NOFOLLOW);
    if (!status)
        return std::nullopt;
    const timespec modified = timesOf(*status)[1];
    return ItemIdentity{static_cast<std::uint64_t>(status->st_dev), static_cast<std::uint64_t>(status->st_ino),
                        typeOf(status->st_mode), modified.tv_sec, modified.tv_nsec};
}

} // namespace platform
