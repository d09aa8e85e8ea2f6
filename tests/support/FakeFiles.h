#pragma once

#include "platform/Files.h"

#include <map>
#include <set>
#include <utility>

// A tree of files in memory. What is added belongs to this user and may be read and written.
class FakeFiles final : public platform::FileQueries, public platform::FileChanges {
public:
    enum class Operation { Create, Copy, Remove };

    static constexpr platform::FileOwner thisUser{501, 20};

    struct Item {
        platform::FileType type = platform::FileType::Regular;
        std::string content = ""; // a file's bytes, a link's target
        bool readable = true;
        bool writable = true;
        platform::FileOwner owner = thisUser;
        std::set<std::string> attributes = {};
        std::uint64_t number = 0; // what an item keeps when it is moved
    };

    // Adds an item, and the folders above it where they are missing.
    Item& addFolder(const std::string& path);
    Item& addFile(const std::string& path, const std::string& content = "") {
        return add(path, {platform::FileType::Regular, content});
    }
    Item& addLink(const std::string& path, const std::string& target) {
        return add(path, {platform::FileType::SymbolicLink, target});
    }

    // The item itself, or null; links are not followed.
    Item* item(const std::string& path);
    bool has(const std::string& path) { return item(path) != nullptr; }

    // Lets each such operation that is asked with the path first fail.
    void failAt(Operation operation, const std::string& path) { failures_.insert({operation, path}); }

    bool fileExists(const std::string& path) override { return followed(path) != nullptr; }
    bool isReadableFile(const std::string& path) override { return allows(path, &Item::readable); }
    bool isWritableFile(const std::string& path) override { return allows(path, &Item::writable); }
    std::optional<std::vector<std::string>> contentsOfDirectory(const std::string& path) override;
    std::vector<std::string> entriesBelow(const std::string& path) override;
    std::optional<platform::FileAttributes> attributesOfItem(const std::string& path) override;
    std::optional<platform::FileOwner> ownerOfItem(const std::string& path) override;
    std::optional<platform::ItemIdentity> identityOfItem(const std::string& path) override;

    bool createDirectory(const std::string& path, ErrorOut error = nullptr) override;
    bool copyItem(const std::string& from, const std::string& to, ErrorOut error = nullptr) override;
    bool moveItem(const std::string& from, const std::string& to, ErrorOut error = nullptr) override;
    bool removeItem(const std::string& path, ErrorOut error = nullptr) override;
    bool removePrivateFolder(const std::string& path) override;
    int removeExtendedAttribute(const std::string& path, const char* name, int options) override;

    // As administrator: nothing is checked or written down.
    void moveTree(const std::string& from, const std::string& to);
    void removeTree(const std::string& path);

    // What was asked for, in order: "remove /a", "copy /a /b", "xattr /a com.apple.quarantine 1".
    std::vector<std::string> changes;
    // Folders that are never private, nor are the folders above them.
    std::set<std::string> sharedFolders;

private:
    Item& add(const std::string& path, const Item& item);
    bool allows(const std::string& path, bool Item::*right);
    void copyTree(const std::string& from, const std::string& to);
    bool fails(Operation operation, const std::string& path) const { return failures_.count({operation, path}) > 0; }
    // Whether the code is 0; any other one becomes the error.
    static bool succeeds(std::int64_t code, const std::string& path, ErrorOut error);
    // The path without links: a link at its end is the item itself, or leads on.
    enum class Links { Kept, Followed };
    std::string resolved(const std::string& path, Links links);
    Item* itself(const std::string& path) { return item(resolved(path, Links::Kept)); }
    Item* followed(const std::string& path) { return item(resolved(path, Links::Followed)); }
    // Why the folder of the place takes no changes, or why nothing can come to the place; 0 when it can.
    std::int64_t folderRefusal(const std::string& place);
    std::int64_t refusal(const std::string& from, const std::string& to);

    static constexpr std::int64_t missingCode = 4;
    static constexpr std::int64_t noPermissionCode = 513;
    static constexpr std::int64_t takenCode = 516;

    std::uint64_t lastNumber_ = 0;
    std::map<std::string, Item> items_{{"/", {platform::FileType::Directory}}};
    std::set<std::pair<Operation, std::string>> failures_;
};
