#pragma once

#include "foundation/Error.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// Paths are bytes. Every operation may be called from any thread and blocks until it is done.

enum class FileType { Regular, Directory, SymbolicLink, Other };

// What an item is; a final link is not followed.
struct FileAttributes {
    FileType type = FileType::Other;
};

// Who owns an item; links are followed.
struct FileOwner {
    std::uint32_t userId = 0;
    std::uint32_t groupId = 0;
};

// What tells an item from every other one; a final link is not followed.
struct ItemIdentity {
    std::uint64_t volume = 0;
    std::uint64_t number = 0;
    FileType type = FileType::Other;
    std::int64_t modifiedSeconds = 0;
    std::int64_t modifiedNanoseconds = 0;
};

// Whether the second is the first one, be it moved meanwhile. On another volume it has another number, and is known by
// its kind and by its time of modification, which goes along and which anything put into a folder changes.
inline bool isSameItem(const ItemIdentity& before, const ItemIdentity& after) {
    if (before.volume == after.volume)
        return before.number == after.number;
    // Not every volume keeps parts of a second.
    const bool sameTime = before.modifiedSeconds == after.modifiedSeconds &&
                          (before.modifiedNanoseconds == after.modifiedNanoseconds || after.modifiedNanoseconds == 0);
    return before.type == after.type && sameTime;
}

// Questions about files.
class FileQueries {
public:
    virtual ~FileQueries() = default;

    // Whether something is there; links are followed, so a dangling link is nothing.
    virtual bool fileExists(const std::string& path) = 0;

    // Whether this user may read the item, or write to it (in a folder: change its entries); links are followed.
    virtual bool isReadableFile(const std::string& path) = 0;
    virtual bool isWritableFile(const std::string& path) = 0;

    // The names in a folder, hidden ones included, in no order. Nothing when it cannot be listed.
    virtual std::optional<std::vector<std::string>> contentsOfDirectory(const std::string& path) = 0;

    // Every entry below a folder at any depth, relative to it, a folder before its content; links are listed and never
    // entered, folders of another volume neither. Empty when the path is no folder.
    virtual std::vector<std::string> entriesBelow(const std::string& path) = 0;

    // Nothing when there is no such item.
    virtual std::optional<FileAttributes> attributesOfItem(const std::string& path) = 0;
    virtual std::optional<FileOwner> ownerOfItem(const std::string& path) = 0;
    virtual std::optional<ItemIdentity> identityOfItem(const std::string& path) = 0;
};

// Changes to files. A failing operation returns false and fills `error` when one is given.
class FileChanges {
public:
    using ErrorOut = std::optional<foundation::Error>*;

    virtual ~FileChanges() = default;

    // Makes a folder and its missing parents, for this user alone. True as well when it is already there, as a real
    // folder of this user.
    virtual bool createDirectory(const std::string& path, ErrorOut error = nullptr) = 0;

    // Copies an item whole: links as links, modes without the set-id bits, times. Fails when anything is at the
    // destination. Devices, FIFOs and sockets fail the copy. A copy that fails removes what it made, known by
    // identity, and nothing else.
    virtual bool copyItem(const std::string& from, const std::string& to, ErrorOut error = nullptr) = 0;

    // Fails when anything is at the destination.
    virtual bool moveItem(const std::string& from, const std::string& to, ErrorOut error = nullptr) = 0;

    // Removes an item and all below it; a link itself, never its target; never crosses into another volume.
    virtual bool removeItem(const std::string& path, ErrorOut error = nullptr) = 0;

    // Removes a folder that this program made for its own work, with everything in it. Of a large one nothing is left
    // at that path, and the rest goes at the program's end. Refuses whatever cannot be one: a path that is not absolute
    // or has an empty, "." or ".." part, a link, another user's folder, a mount point, and
    // "/", the home, the applications folder, the temporary folder and all folders above these.
    virtual bool removePrivateFolder(const std::string& path) = 0;

    // The result of the system call: 0, or -1 with errno. With option 1 a link's own attribute is removed.
    virtual int removeExtendedAttribute(const std::string& path, const char* name, int options) = 0;
};

// removeExtendedAttribute: act on a link itself.
inline constexpr int xattrNoFollow = 0x0001;

} // namespace platform
