#include "platform/posix/PosixFileChanges.h"

#include "platform/posix/FileFailure.h"
#include "platform/posix/ItemPlace.h"
#include "platform/posix/TreeCopy.h"
#include "platform/posix/TreeRemoval.h"
#include "platform/posix/UniqueRename.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <sys/xattr.h>
#include <thread>
#include <utility>

namespace platform {

namespace {

constexpr auto reading = FileAccess::Reading;
constexpr auto writing = FileAccess::Writing;

constexpr int leftoverRounds = 10;
constexpr std::chrono::milliseconds leftoverPause(50);

// Runs the step; a failure becomes the error.
template <class Step>
bool attempt(const char* verb, FileChanges::ErrorOut error, Step step) {
    try {
        step();
        return true;
    } catch (const FileFailure& failure) {
        if (error != nullptr)
            *error = errorOf(failure, verb);
        return false;
    }
}

// The copy of an item on another volume takes its place only whole.
void moveToOtherVolume(const ItemPlace& from, const ItemPlace& to) {
    requireChangeableFolder(from);
    bool made = false;
    try {
        copyItem(from, to, made);
    } catch (const FileFailure&) {
        if (made)
            attempt("remove", nullptr, [&] { removeItem(to); });
        throw;
    }
    // Where this fails the copy stays: it may be the only whole one left.
    removeItem(from);
}

bool isAtOrBelow(const std::string& path, const std::string& folder) {
    return path == folder ||
           (path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 && path[folder.size()] == '/');
}

bool isThere(const MadeFolder& folder) {
    struct stat status {};
    return ::lstat(folder.path.c_str(), &status) == 0 && identityOf(status) == folder.identity;
}

} // namespace

PosixFileChanges::PosixFileChanges(ProtectedPaths paths)
    : temporaryRoot_(paths.temporaryRoot),
      protected_({std::move(paths.home), std::move(paths.applications), std::move(paths.temporaryRoot)}) {}

bool PosixFileChanges::createDirectory(const std::string& path, ErrorOut error) {
    return attempt("create", error, [&] {
        const std::lock_guard lock(creation_);
        if (ended_)
            throw FileFailure{writing, path, ECANCELED, "the program is ending"};
        createFolders(path, [this](const MadeFolder& folder) { remember(folder); });
    });
}

bool PosixFileChanges::copyItem(const std::string& from, const std::string& to, ErrorOut error) {
    return attempt("copy", error, [&] {
        bool made = false;
        platform::copyItem(ItemPlace::of(from, reading), ItemPlace::of(to, writing), made);
    });
}

bool PosixFileChanges::moveItem(const std::string& from, const std::string& to, ErrorOut error) {
    return attempt("move", error, [&] {
        const ItemPlace source = ItemPlace::of(from, writing);
        const ItemPlace destination = ItemPlace::of(to, writing);
        const int failed = renameUnique(source, destination);
        if (failed == EXDEV)
            moveToOtherVolume(source, destination);
        else if (failed != 0)
            throw FileFailure{writing, failed == EEXIST ? to : from, failed, {}};
        forget(from);
    });
}

bool PosixFileChanges::removeItem(const std::string& path, ErrorOut error) {
    return attempt("remove", error, [&] {
        platform::removeItem(ItemPlace::of(path, writing));
        forget(path);
    });
}

bool PosixFileChanges::removePrivateFolder(const std::string& path) {
    return attempt("remove", nullptr, [&] {
        ProtectedFolders::requirePlainPath(path);
        removeFolder(ItemPlace::of(path, writing), [&](int folder) { protected_.requireRemovable(folder, path); });
        forget(path);
    });
}

int PosixFileChanges::removeExtendedAttribute(const std::string& path, const char* name, int options) {
    if (path.find('\0') != std::string::npos) {
        errno = EDOM;
        return -1;
    }
    const std::string systemName = std::string("user.") + name;
    return options == xattrNoFollow ? ::lremovexattr(path.c_str(), systemName.c_str())
                                    : ::removexattr(path.c_str(), systemName.c_str());
}

void PosixFileChanges::remember(const MadeFolder& folder) {
    struct stat root {};
    if (temporaryRoot_.empty() || ::stat(temporaryRoot_.c_str(), &root) != 0)
        return;
    const std::vector<FileIdentity> above = ancestry(folder.parent);
    if (!contains(above, identityOf(root)))
        return;
    const std::lock_guard lock(mutex_);
    const bool covered = std::any_of(leftovers_.begin(), leftovers_.end(), [&above](const MadeFolder& leftover) {
        return contains(above, leftover.identity) && isThere(leftover);
    });
    if (!covered)
        leftovers_.push_back(folder);
}

void PosixFileChanges::forget(const std::string& path) {
    const std::lock_guard lock(mutex_);
    std::erase_if(leftovers_, [&path](const MadeFolder& leftover) { return isAtOrBelow(leftover.path, path); });
}

bool PosixFileChanges::removeLeftovers() {
    {
        const std::lock_guard lock(creation_);
        ended_ = true;
    }
    for (int round = 0; round < leftoverRounds; ++round) {
        if (round > 0)
            std::this_thread::sleep_for(leftoverPause);
        std::vector<MadeFolder> leftovers;
        {
            const std::lock_guard lock(mutex_);
            leftovers = leftovers_;
        }
        bool allGone = true;
        for (const MadeFolder& leftover : leftovers) {
            if (removeLeftover(leftover))
                forget(leftover.path);
            else
                allGone = false;
        }
        if (allGone)
            return true;
    }
    return false;
}

// Whether the folder is gone, be it removed here or by somebody else; what lies at its path instead is not touched.
bool PosixFileChanges::removeLeftover(const MadeFolder& folder) const {
    if (!isThere(folder))
        return true;
    attempt("remove", nullptr, [&] {
        ProtectedFolders::requirePlainPath(folder.path);
        removeFolder(ItemPlace::of(folder.path, writing), [&](int found) {
            struct stat status {};
            if (::fstat(found, &status) != 0)
                throwErrno(writing, folder.path);
            if (identityOf(status) != folder.identity)
                throw FileFailure{writing, folder.path, ENOENT, {}};
            protected_.requireRemovable(found, folder.path);
        });
    });
    return !isThere(folder);
}

} // namespace platform
