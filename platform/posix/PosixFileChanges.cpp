#include "platform/posix/PosixFileChanges.h"

#include "foundation/PathString.h"
#include "platform/posix/FileFailure.h"
#include "platform/posix/ForsakenFolders.h"
#include "platform/posix/SystemCalls.h"
#include "platform/posix/TreeCopy.h"
#include "platform/posix/TreeRemoval.h"
#include "platform/posix/UniqueRename.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
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
    copyItem(from, to);
    // Where this fails the copy stays: it may be the only whole one left.
    removeItem(from);
}

bool isAtOrBelow(const std::string& path, const std::string& folder) {
    return path == folder ||
           (path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 && path[folder.size()] == '/');
}

bool holdsAnyOf(const std::vector<std::string>& paths, const std::string& folder) {
    return std::any_of(
        paths.begin(), paths.end(), [&folder](const std::string& path) { return isAtOrBelow(path, folder); });
}

bool isThere(const MadeFolder& folder) {
    struct stat status {};
    return ::lstat(folder.path.c_str(), &status) == 0 && identityOf(status) == folder.identity;
}

} // namespace

PosixFileChanges::PosixFileChanges(ProtectedPaths paths, std::chrono::milliseconds patience)
    : temporaryRoot_(paths.temporaryRoot), patience_(patience),
      protected_({std::move(paths.home), std::move(paths.applications), std::move(paths.temporaryRoot)}) {}

bool PosixFileChanges::createDirectory(const std::string& path, ErrorOut error) {
    return attempt(
        "create", error,
        [&] {
            const std::lock_guard lock(creation_);
            if (ended_)
                throw FileFailure{writing, path, ECANCELED, "the program is ending"};
            createFolders(
                path, [this](const MadeFolder& folder) { remember(folder); });
        });
}

bool PosixFileChanges::copyItem(const std::string& from, const std::string& to, ErrorOut error) {
    return attempt(
        "copy", error, [&] { platform::copyItem(ItemPlace::of(from, reading), ItemPlace::of(to, writing)); });
}

bool PosixFileChanges::moveItem(const std::string& from, const std::string& to, ErrorOut error) {
    return attempt(
        "move", error,
        [&] {
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
    return attempt(
        "remove", error,
        [&] {
            platform::removeItem(ItemPlace::of(path, writing));
            forget(path);
        });
}

bool PosixFileChanges::removePrivateFolder(const std::string& path) {
    return attempt(
        "remove", nullptr,
        [&] {
            ProtectedFolders::requirePlainPath(path);
            const ItemPlace place = ItemPlace::of(path, writing);
            const auto check = [&](int folder) { protected_.requireRemovable(folder, path); };
            if (!removeFolder(place, check, std::chrono::steady_clock::now() + patience_) && !layAside(place))
                removeFolder(place, check);
            forget(path);
        });
}

int PosixFileChanges::removeExtendedAttribute(const std::string& path, const char* name, int options) {
    if (path.find('\0') != std::string::npos) {
        errno = EDOM;
        return -1;
    }
    return removeAttribute(path.c_str(), name, (options & xattrNoFollow) != 0 ? Links::Refused : Links::Followed);
}

void PosixFileChanges::remember(const MadeFolder& folder) {
    struct stat root {};
    if (temporaryRoot_.empty() || ::stat(temporaryRoot_.c_str(), &root) != 0)
        return;
    const std::vector<FileIdentity> above = ancestry(folder.parent);
    if (!contains(above, identityOf(root)))
        return;
    const std::lock_guard lock(mutex_);
    const bool covered = std::any_of(leftovers_.begin(), leftovers_.end(), [&above](const Leftover& leftover) {
        return contains(above, leftover.folder.identity) && isThere(leftover.folder);
    });
    if (!covered)
        leftovers_.push_back({folder, keepFolder(folder.path)});
}

void PosixFileChanges::forget(const std::string& path) {
    const std::lock_guard lock(mutex_);
    std::erase_if(leftovers_, [&path](const Leftover& leftover) { return isAtOrBelow(leftover.folder.path, path); });
}

bool PosixFileChanges::layAside(const ItemPlace& place) {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(leftovers_.begin(), leftovers_.end(), [&place](const Leftover& leftover) {
        return leftover.folder.path == place.path && isThere(leftover.folder);
    });
    if (found == leftovers_.end())
        return false;
    std::string name = "0" + place.name;
    const std::string parent = foundation::path::deletingLastPathComponent(place.path);
    for (int failed = EEXIST; failed == EEXIST; name.insert(0, 1, '0')) {
        const std::string path = foundation::path::appendingPathComponent(parent, name);
        failed = renameUnique(place, ItemPlace::of(path, writing));
        if (failed == 0)
            found->folder.path = path;
    }
    return found->folder.path != place.path;
}

bool PosixFileChanges::removeLeftovers(const std::vector<std::string>& inUse) {
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
            for (const Leftover& leftover : leftovers_)
                leftovers.push_back(leftover.folder);
        }
        bool allGone = true;
        for (const MadeFolder& leftover : leftovers) {
            if (holdsAnyOf(inUse, leftover.path))
                continue;
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
            if (identityOf(found) != folder.identity)
                throw FileFailure{writing, folder.path, ENOENT, {}};
            protected_.requireRemovable(found, folder.path);
        });
    });
    return !isThere(folder);
}

} // namespace platform
