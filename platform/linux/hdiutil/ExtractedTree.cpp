#include "ExtractedTree.h"

#include "Failure.h"
#include "FolderTree.h"

#include <algorithm>
#include <array>
#include <climits>
#include <fcntl.h>
#include <iterator>
#include <string_view>

namespace hdiutil {
namespace {

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
    const FileDescriptor folder = openFolder(root, name);
    if (!folder)
        throw systemFailure("could not open a folder of the volume");
    for (const std::string& entry : entryNames(folder.get()))
        if (entry.starts_with(target))
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

// As 7-Zip lists it.
std::string shown(std::string path) {
    std::replace_if(
        path.begin(), path.end(), [](unsigned char c) { return c < ' '; }, '_');
    return path;
}

} // namespace

ExtractedTree::ExtractedTree(std::string linkPrefix, Interruption& interruption)
    : _linkPrefix(std::move(linkPrefix)), _interruption(interruption) {}

bool ExtractedTree::holdsLink(const std::string& path, std::size_t targetLength) const {
    const auto [first, last] = _targetLengths.equal_range(path);
    return std::distance(first, last) == 1 && first->second == targetLength;
}

void ExtractedTree::putLink(int folder, const std::string& path, const std::string& target,
                            std::optional<std::time_t> modified) {
    FileDescriptor parent = openFolder(folder, ".");
    std::size_t at = 0;
    for (std::size_t slash = path.find('/'); parent && slash != std::string::npos; slash = path.find('/', at)) {
        parent = openFolder(parent.get(), path.substr(at, slash - at));
        at = slash + 1;
    }
    struct stat above {};
    if (!parent || ::fstat(parent.get(), &above) != 0)
        throw systemFailure("could not open a folder of the volume");
    const std::string name = path.substr(at);
    struct stat there {};
    if (::fstatat(parent.get(), name.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0) {
        if (S_ISREG(there.st_mode) && there.st_size == 0)
            --_files;
        else if (S_ISLNK(there.st_mode))
            --_links;
        else
            throw Failure("the image holds two entries of one name");
        if (::unlinkat(parent.get(), name.c_str(), 0) != 0)
            throw systemFailure("could not write a link of the volume");
    }
    if (::symlinkat(target.c_str(), parent.get(), name.c_str()) != 0)
        throw systemFailure("the image holds a link that cannot be made here");
    ++_links;
    if (modified) {
        const timespec ownTimes[] = {{*modified, 0}, {*modified, 0}};
        ::utimensat(parent.get(), name.c_str(), ownTimes, AT_SYMLINK_NOFOLLOW);
    }
    const timespec times[] = {above.st_atim, above.st_mtim};
    ::futimens(parent.get(), times);
}

void ExtractedTree::mend(int folder, const std::string& path) {
    _interruption.check();
    struct stat status {};
    if (::fstat(folder, &status) != 0)
        throw systemFailure("could not look at a folder of the volume");
    bool isChanged = false;
    for (const std::string& name : entryNames(folder))
        isChanged |= mendEntry(folder, path, name);
    if (isChanged) {
        const timespec times[] = {status.st_atim, status.st_mtim};
        ::futimens(folder, times);
    }
}

void ExtractedTree::removeHfsMetadata(int root) {
    TreeRemoval removal(root);
    for (const std::string& name : entryNames(root))
        if (isHfsMetadata(root, name))
            removal.removeEntry(root, name);
    if (removal.firstError() != 0)
        throw systemFailure("could not remove the volume's own files", removal.firstError());
}

bool ExtractedTree::mendEntry(int folder, const std::string& path, const std::string& name) {
    struct stat status {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        throw systemFailure("could not look at an entry of the volume");
    if (S_ISLNK(status.st_mode))
        return mendLink(folder, path, name, status);
    if (!S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode))
        throw Failure("the image holds a device, pipe or socket");
    if ((status.st_mode & 07777 & ~permissionBits) != 0 &&
        ::fchmodat(folder, name.c_str(), status.st_mode & permissionBits, 0) != 0)
        throw systemFailure("could not set the permissions of an entry of the volume");
    if (S_ISREG(status.st_mode)) {
        ++_files;
        return false;
    }
    const FileDescriptor child = openFolder(folder, name);
    if (!child)
        throw systemFailure("could not open a folder of the volume");
    mend(child.get(), path + name + "/");
    return false;
}

bool ExtractedTree::mendLink(int folder, const std::string& path, const std::string& name, const struct stat& status) {
    ++_links;
    const std::string target = readLink(folder, name);
    const bool isPrefixed = target.starts_with(_linkPrefix + "/");
    // An absolute target without the prefix has lost it by climbing above the root, and with it its meaning.
    if (isPrefixed || !target.starts_with('/'))
        _targetLengths.emplace(shown(path + name), target.size() - (isPrefixed ? _linkPrefix.size() : 0));
    if (!isPrefixed)
        return false;
    const std::string ownTarget = target.substr(_linkPrefix.size());
    const timespec times[] = {status.st_atim, status.st_mtim};
    if (::unlinkat(folder, name.c_str(), 0) != 0 || ::symlinkat(ownTarget.c_str(), folder, name.c_str()) != 0)
        throw systemFailure("could not write a link of the volume");
    ::utimensat(folder, name.c_str(), times, AT_SYMLINK_NOFOLLOW);
    return true;
}

} // namespace hdiutil
