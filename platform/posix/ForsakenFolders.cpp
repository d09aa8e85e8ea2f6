#include "platform/posix/ForsakenFolders.h"

#include "foundation/PathString.h"
#include "platform/posix/FolderListing.h"
#include "platform/posix/TreeRemoval.h"

#include <ctime>
#include <fcntl.h>
#include <regex>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

// Of a download, and of a mount point.
bool isOwnName(const std::string& name) {
    static const std::regex own(R"([0-9]+\.tolvix|[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}-[0-9]+-[0-9A-F]{16})");
    return name.size() < 128 && std::regex_match(name, own);
}

bool isForsaken(int folder, std::chrono::seconds youngest) {
    struct stat status {};
    return ::fstat(folder, &status) == 0 && status.st_uid == ::geteuid() &&
           ::time(nullptr) - status.st_ctime >= youngest.count() && ::flock(folder, LOCK_EX | LOCK_NB) == 0;
}

} // namespace

FileDescriptor keepFolder(const std::string& path) {
    FileDescriptor folder = openFolderIn(AT_FDCWD, path);
    if (folder.isOpen() && ::flock(folder.get(), LOCK_SH | LOCK_NB) != 0)
        folder.close();
    return folder;
}

void removeForsakenFolders(const std::string& temporaryRoot, const std::function<bool(const std::string&)>& isInUse,
                           std::chrono::seconds youngest) {
    const FileDescriptor root = openFolderIn(AT_FDCWD, temporaryRoot);
    const auto entries = listFolder(root.get());
    if (!entries)
        return;
    for (const FolderEntry& entry : *entries) {
        const std::string path = foundation::path::appendingPathComponent(temporaryRoot, entry.name);
        if (entry.type != S_IFDIR || !isOwnName(entry.name))
            continue;
        const FileDescriptor folder = openFolderIn(AT_FDCWD, path);
        if (!folder.isOpen() || !isForsaken(folder.get(), youngest) || isInUse(path))
            continue;
        try {
            removeIfSame(ItemPlace::of(path, FileAccess::Writing), identityOf(folder.get()));
        } catch (const FileFailure&) {
            // Another volume, or somebody else is at work there.
        }
    }
}

} // namespace platform
