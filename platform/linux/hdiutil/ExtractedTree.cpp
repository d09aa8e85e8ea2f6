#include "platform/linux/hdiutil/ExtractedTree.h"

#include "platform/linux/hdiutil/Failure.h"
#include "platform/posix/FolderListing.h"
#include "platform/posix/SystemCalls.h"
#include "platform/posix/TreeRemoval.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <iterator>
#include <string_view>
#include <unistd.h>

namespace hdiutil {
namespace {

using platform::entriesOf;
using platform::FileAccess;
using platform::FileDescriptor;
using platform::FolderEntry;
using platform::openFolderIn;

constexpr mode_t permissionBits = 0777;

struct PrivateFolder {
    std::string_view beginning; // of the folder's name
    std::string_view target;    // begins the names of the entries that hard links lead to
};

// The first four characters of the folder of hard-linked files are not writable ones; 7-Zip puts brackets instead.
constexpr std::array<PrivateFolder, 2> privateFolders = {{
    {"[HFS+ Private Data]", "iNode"},
    {".HFS+ Private Directory Data", "dir_"},
}};

constexpr std::array<std::string_view, 2> journalFiles = {".journal", ".journal_info_block"};

void refuseHardLinks(int root, const std::string& name, std::string_view target) {
    const FileDescriptor folder = openFolderIn(root, name);
    if (!folder.isOpen())
        throw systemFailure("could not open a folder of the volume");
    for (const FolderEntry& entry : entriesOf(folder.get(), FileAccess::Reading, name))
        if (entry.name.starts_with(target))
            throw Failure("the image holds hard links, which cannot be read");
}

bool isHfsMetadata(int root, const std::string& name) {
    for (const PrivateFolder& folder : privateFolders) {
        if (name.starts_with(folder.beginning)) {
            refuseHardLinks(root, name, folder.target);
            return true;
        }
    }
    return name == journalFiles[0] || name == journalFiles[1];
}

std::string readLink(int folder, const std::string& name) {
    std::string target(PATH_MAX, '\0');
    const ssize_t length = ::readlinkat(folder, name.c_str(), target.data(), target.size());
    if (length < 0)
        throw systemFailure("could not read a link of the volume");
    target.resize(static_cast<std::size_t>(length));
    return target;
}

// Takes a file's or link's place, if there is one.
void writeLink(int folder, const std::string& name, const std::string& target,
               const std::optional<std::array<timespec, 2>>& times) {
    if (::unlinkat(folder, name.c_str(), 0) != 0 && errno != ENOENT)
        throw systemFailure("could not write a link of the volume");
    if (::symlinkat(target.c_str(), folder, name.c_str()) != 0)
        throw systemFailure("the image holds a link that cannot be made here");
    if (times)
        ::utimensat(folder, name.c_str(), times->data(), AT_SYMLINK_NOFOLLOW);
}

// As 7-Zip lists it.
std::string shown(std::string path) {
    std::replace_if(
        path.begin(), path.end(), [](unsigned char c) { return c < ' '; }, '_');
    return path;
}

} // namespace

ExtractedTree::ExtractedTree(std::string linkPrefix, Interruption& interruption)
    : linkPrefix_(std::move(linkPrefix)), interruption_(interruption) {}

bool ExtractedTree::holdsLink(const std::string& path, std::size_t targetLength) const {
    const auto [first, last] = targetLengths_.equal_range(path);
    return std::distance(first, last) == 1 && first->second == targetLength;
}

void ExtractedTree::putLink(int folder, const std::string& path, const std::string& target,
                            std::optional<std::time_t> modified) {
    FileDescriptor parent = openFolderIn(folder, ".");
    std::size_t at = 0;
    for (std::size_t slash = path.find('/'); parent.isOpen() && slash != std::string::npos;
         slash = path.find('/', at)) {
        parent = openFolderIn(parent.get(), path.substr(at, slash - at));
        at = slash + 1;
    }
    struct stat above {};
    if (!parent.isOpen() || ::fstat(parent.get(), &above) != 0)
        throw systemFailure("could not open a folder of the volume");
    const std::string name = path.substr(at);
    struct stat there {};
    if (::fstatat(parent.get(), name.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0) {
        if (S_ISREG(there.st_mode) && there.st_size == 0)
            --files_;
        else if (S_ISLNK(there.st_mode))
            --links_;
        else
            throw Failure("the image holds two entries of one name");
    }
    std::optional<std::array<timespec, 2>> times;
    if (modified)
        times = {timespec{*modified, 0}, timespec{*modified, 0}};
    writeLink(parent.get(), name, target, times);
    ++links_;
    ::futimens(parent.get(), platform::timesOf(above).data());
}

void ExtractedTree::mend(int folder) {
    platform::FolderCursor at(openFolderIn(folder, "."), {}, FileAccess::Writing);
    platform::walkTree(at, *this);
}

void ExtractedTree::removeHfsMetadata(int root) {
    platform::ItemPlace place{openFolderIn(root, "."), {}, "the volume's own files"};
    for (const FolderEntry& entry : entriesOf(root, FileAccess::Reading, "the volume")) {
        if (!isHfsMetadata(root, entry.name))
            continue;
        place.name = entry.name;
        platform::removeItem(place);
    }
}

std::vector<std::string> ExtractedTree::enterFolder(platform::FolderCursor& at) {
    interruption_.check();
    bool isChanged = false;
    std::vector<std::string> folders;
    for (const FolderEntry& entry : entriesOf(at.descriptor(), at.access(), "the volume")) {
        const char* const name = entry.name.c_str();
        struct stat status {};
        if (::fstatat(at.descriptor(), name, &status, AT_SYMLINK_NOFOLLOW) != 0)
            throw systemFailure("could not look at an entry of the volume");
        if (S_ISLNK(status.st_mode)) {
            isChanged |= mendLink(at, entry.name, status);
            continue;
        }
        if (!S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode))
            throw Failure("the image holds a device, pipe or socket");
        if ((status.st_mode & 07777 & ~permissionBits) != 0 &&
            ::fchmodat(at.descriptor(), name, status.st_mode & permissionBits, 0) != 0)
            throw systemFailure("could not set the permissions of an entry of the volume");
        if (S_ISDIR(status.st_mode))
            folders.push_back(entry.name);
        else
            ++files_;
    }
    if (isChanged)
        ::futimens(at.descriptor(), platform::timesOf(at.status()).data());
    return folders;
}

FileDescriptor ExtractedTree::openFolder(platform::FolderCursor& at, const std::string& name) {
    FileDescriptor folder = at.open(name);
    if (!folder.isOpen())
        throw systemFailure("could not open a folder of the volume");
    return folder;
}

bool ExtractedTree::mendLink(const platform::FolderCursor& at, const std::string& name, const struct stat& status) {
    ++links_;
    const std::string target = readLink(at.descriptor(), name);
    const bool isPrefixed = target.starts_with(linkPrefix_ + "/");
    // An absolute target without the prefix has lost it by climbing above the root, and with it its meaning.
    if (isPrefixed || !target.starts_with('/'))
        targetLengths_.emplace(shown(at.pathOf(name)), target.size() - (isPrefixed ? linkPrefix_.size() : 0));
    if (isPrefixed)
        writeLink(at.descriptor(), name, target.substr(linkPrefix_.size()), platform::timesOf(status));
    return isPrefixed;
}

} // namespace hdiutil
