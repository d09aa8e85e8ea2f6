#include "platform/posix/TreeCopy.h"

#include "platform/posix/FolderListing.h"
#include "platform/posix/SystemCalls.h"
#include "platform/posix/TreeRemoval.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace platform {

namespace {

constexpr auto reading = FileAccess::Reading;
constexpr auto writing = FileAccess::Writing;

constexpr std::size_t batchSize = 16;

FileFailure insideItself(const std::string& path) {
    return {writing, path, EINVAL, "the copy would lie inside the folder itself"};
}

FolderCursor openRoot(const ItemPlace& place, FileAccess access) {
    FileDescriptor folder = openFolderIn(place.folder.get(), place.name);
    if (!folder.isOpen())
        throwErrno(access, place.path);
    return {std::move(folder), place.path, access};
}

// Until its traits are set, a folder is closed to others and open to this user.
void makeFolder(int parent, const std::string& name, const std::string& path) {
    if (::mkdirat(parent, name.c_str(), S_IRWXU) != 0)
        throwErrno(writing, path);
}

void copyFolder(const ItemPlace& from, const ItemPlace& to, MadeItem& made) {
    FolderCursor source = openRoot(from, reading);
    if (contains(ancestry(to.folder.get()), identityOf(source.status())))
        throw insideItself(to.path);
    makeFolder(to.folder.get(), to.name, to.path);
    FolderCursor copy = openRoot(to, writing);
    made = identityOf(copy.status());
    TreeCopy(std::move(source), std::move(copy)).run();
}

void copyAnything(const ItemPlace& from, const ItemPlace& to, MadeItem& made) {
    const CopyEnd source{from.folder.get(), from.name.c_str(), from.path};
    const CopyEnd destination{to.folder.get(), to.name.c_str(), to.path};
    switch (from.status(reading).st_mode & S_IFMT) {
    case S_IFDIR:
        return copyFolder(from, to, made);
    case S_IFLNK:
        return copySymbolicLink(source, destination, &made);
    case S_IFREG:
        return copyRegularFile(source, destination, &made);
    default:
        throw FileFailure{reading, from.path, EOPNOTSUPP, "it is no file, folder or link"};
    }
}

} // namespace

void copyItem(const ItemPlace& from, const ItemPlace& to) {
    MadeItem made;
    try {
        copyAnything(from, to, made);
    } catch (const FileFailure&) {
        try {
            if (made)
                removeIfSame(to, *made);
        } catch (const FileFailure&) {
            // The first failure is the one to tell.
        }
        throw;
    }
}

TreeCopy::TreeCopy(FolderCursor from, FolderCursor to)
    : from_(std::move(from)), to_(std::move(to)), copyRoot_(identityOf(to_.status())) {}

void TreeCopy::run() {
    folders_.emplace_back();
    walkTree(from_, *this);
    workers_.finish();
    applyFolderTraits();
}

std::vector<std::string> TreeCopy::enterFolder(FolderCursor& at) {
    folders_.back().traits = at.status();
    copyExtendedAttributes(at.descriptor(), to_.descriptor(), at.path(), to_.path());
    std::vector<std::string> files;
    std::vector<std::string> subfolders;
    for (FolderEntry& entry : entriesOf(at.descriptor(), reading, at.path())) {
        const char* const name = entry.name.c_str();
        if (entry.type == S_IFDIR) {
            subfolders.push_back(std::move(entry.name));
        } else if (entry.type == S_IFREG) {
            files.push_back(std::move(entry.name));
            if (files.size() == batchSize)
                submit(files);
        } else if (entry.type == S_IFLNK) {
            copySymbolicLink({at.descriptor(), name, at.pathOf(entry.name)},
                             {to_.descriptor(), name, to_.pathOf(entry.name)});
        } else {
            throw FileFailure{reading, at.pathOf(entry.name), EOPNOTSUPP, "it is no file, folder or link"};
        }
    }
    if (!files.empty())
        submit(files);
    return subfolders;
}

void TreeCopy::submit(std::vector<std::string>& names) {
    workers_.submit({from_.folder(), to_.folder(), from_.path(), to_.path(), std::move(names)});
    names.clear();
}

FileDescriptor TreeCopy::openFolder(FolderCursor& at, const std::string& name) {
    FileDescriptor folder = at.open(name);
    struct stat status {};
    if (!folder.isOpen() || ::fstat(folder.get(), &status) != 0)
        throwErrno(reading, at.pathOf(name));
    // Another view of the same volume can hold the copy although no folder above it is the source.
    if (identityOf(status) == copyRoot_)
        throw insideItself(to_.path());
    makeFolder(to_.descriptor(), name, to_.pathOf(name));
    FileDescriptor copy = to_.open(name);
    if (!copy.isOpen())
        throwErrno(writing, to_.pathOf(name));
    to_.enter(name, std::move(copy));
    folders_.push_back({at.depth() + 1, name, {}});
    return folder;
}

void TreeCopy::leaveFolder(FolderCursor& /*parent*/, const std::string& /*name*/) {
    to_.leave();
}

void TreeCopy::applyFolderTraits() {
    std::vector<const Folder*> way;
    const auto leaveUntil = [&](std::size_t depth) {
        while (to_.depth() > depth) {
            const std::string path = to_.path();
            const auto left = to_.leave();
            applyTraits(left->get(), way.back()->traits, path);
            way.pop_back();
        }
    };
    for (std::size_t index = 1; index < folders_.size(); ++index) {
        const Folder& folder = folders_[index];
        leaveUntil(folder.depth - 1);
        FileDescriptor copy = to_.open(folder.name);
        if (!copy.isOpen())
            throwErrno(writing, to_.pathOf(folder.name));
        to_.enter(folder.name, std::move(copy));
        way.push_back(&folder);
    }
    leaveUntil(0);
    applyTraits(to_.descriptor(), folders_.front().traits, to_.path());
}

} // namespace platform
