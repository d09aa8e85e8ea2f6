#include "platform/posix/TreeRemoval.h"

#include "foundation/PathString.h"
#include "platform/posix/FolderListing.h"
#include "platform/posix/SystemCalls.h"
#include "platform/posix/TreeWalk.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

constexpr auto writing = FileAccess::Writing;

void unlinkEntry(int folder, const std::string& name, int flags, const std::string& path) {
    if (::unlinkat(folder, name.c_str(), flags) != 0 && errno != ENOENT)
        throwErrno(writing, path);
}

// The folder as a place only; not open when it is gone.
FileDescriptor findFolder(int parent, dev_t parentDevice, const std::string& name, const std::string& path) {
    FileDescriptor folder = openPlace(parent, name.c_str(), Links::Refused);
    if (!folder.isOpen()) {
        if (errno != ENOENT)
            throwErrno(writing, path);
    } else if (isVolumeRoot(folder.get(), parentDevice)) {
        throw FileFailure{writing, path, EBUSY, "another volume begins there"};
    }
    return folder;
}

// Opens the folder for its entries to be read and removed; not open when it is gone.
FileDescriptor openUp(const FileDescriptor& place, const std::string& path) {
    struct stat status {};
    if (::fstat(place.get(), &status) != 0)
        throwErrno(writing, path);
    if (status.st_uid == ::geteuid() && (status.st_mode & S_IRWXU) != S_IRWXU) {
        // Where this fails, opening fails too and says why.
        changeModeOfPlace(place.get(), (status.st_mode & 07777) | S_IRWXU);
    }
    FileDescriptor folder = openFolderIn(place.get(), ".");
    if (!folder.isOpen() && errno != ENOENT)
        throwErrno(writing, path);
    return folder;
}

struct TimeIsOver {};

class Removal : public FolderVisitor {
public:
    explicit Removal(RemovalLimit limit) : limit_(limit) {}

    std::vector<std::string> enterFolder(FolderCursor& at) override {
        auto entries = listFolder(at.descriptor());
        if (!entries && errno != ENOENT)
            throwErrno(writing, at.path());
        std::vector<std::string> folders;
        for (FolderEntry& entry : std::move(entries).value_or(std::vector<FolderEntry>()))
            if (entry.type == S_IFDIR)
                folders.push_back(std::move(entry.name));
            else
                removeEntry(at, entry.name, 0);
        return folders;
    }

    FileDescriptor openFolder(FolderCursor& at, const std::string& name) override {
        const std::string path = at.pathOf(name);
        const FileDescriptor place = findFolder(at.descriptor(), at.status().st_dev, name, path);
        return place.isOpen() ? openUp(place, path) : FileDescriptor();
    }

    void leaveFolder(FolderCursor& parent, const std::string& name) override {
        removeEntry(parent, name, AT_REMOVEDIR);
    }

private:
    void removeEntry(FolderCursor& at, const std::string& name, int flags) const {
        if (limit_ && std::chrono::steady_clock::now() >= *limit_)
            throw TimeIsOver();
        unlinkEntry(at.descriptor(), name, flags, at.pathOf(name));
    }

    const RemovalLimit limit_;
};

} // namespace

void requireChangeableFolder(const ItemPlace& place) {
    if (::faccessat(place.folder.get(), ".", W_OK | X_OK, AT_EACCESS) != 0)
        throwErrno(writing, place.path);
}

bool removeFolder(const ItemPlace& place, const std::function<void(int folder)>& check, RemovalLimit limit) {
    if (foundation::path::isDots(place.name))
        throw FileFailure{writing, place.path, EINVAL, {}};
    struct stat parent {};
    if (::fstat(place.folder.get(), &parent) != 0)
        throwErrno(writing, place.path);
    const FileDescriptor folder = findFolder(place.folder.get(), parent.st_dev, place.name, place.path);
    if (!folder.isOpen())
        throw FileFailure{writing, place.path, ENOENT, {}};
    check(folder.get());
    requireChangeableFolder(place);
    FileDescriptor root = openUp(folder, place.path);
    if (!root.isOpen())
        return true;
    FolderCursor at(std::move(root), place.path, writing);
    Removal removal(limit);
    try {
        walkTree(at, removal);
    } catch (const TimeIsOver&) {
        return false;
    }
    unlinkEntry(place.folder.get(), place.name, AT_REMOVEDIR, place.path);
    return true;
}

void removeIfSame(const ItemPlace& place, const FileIdentity& identity) {
    struct stat status {};
    if (::fstatat(place.folder.get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
        identityOf(status) != identity)
        return;
    if (!S_ISDIR(status.st_mode))
        return unlinkEntry(place.folder.get(), place.name, 0, place.path);
    removeFolder(place, [&](int folder) {
        if (identityOf(folder) != identity)
            throw FileFailure{writing, place.path, ENOENT, {}};
    });
}

void removeItem(const ItemPlace& place) {
    if (S_ISDIR(place.status(writing).st_mode))
        removeFolder(place, [](int) {});
    else
        unlinkEntry(place.folder.get(), place.name, 0, place.path);
}

} // namespace platform
