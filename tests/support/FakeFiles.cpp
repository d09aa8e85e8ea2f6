#include "tests/support/FakeFiles.h"

#include "foundation/PathString.h"

#include <algorithm>
#include <cerrno>

namespace path = foundation::path;
using platform::FileType;

FakeFiles::Item& FakeFiles::addFolder(const std::string& path) {
    if (path != "/")
        addFolder(path::deletingLastPathComponent(path));
    Item& item = items_[path];
    item.type = FileType::Directory;
    if (item.number == 0)
        item.number = ++lastNumber_;
    return item;
}

FakeFiles::Item& FakeFiles::add(const std::string& path, const Item& item) {
    addFolder(path::deletingLastPathComponent(path));
    Item& added = items_[path] = item;
    added.number = ++lastNumber_;
    return added;
}

FakeFiles::Item* FakeFiles::item(const std::string& path) {
    const auto found = items_.find(path);
    return found == items_.end() ? nullptr : &found->second;
}

FakeFiles::Item* FakeFiles::followed(const std::string& path) {
    Item* found = item(path);
    return found != nullptr && found->type == FileType::SymbolicLink ? item(found->content) : found;
}

bool FakeFiles::folderTakesChanges(const std::string& path) {
    const Item* folder = item(path::deletingLastPathComponent(path));
    return folder != nullptr && folder->type == FileType::Directory && folder->writable;
}

void FakeFiles::copyTree(const std::string& from, const std::string& to) {
    const auto names = entriesBelow(from);
    items_[to] = items_.at(from);
    items_[to].number = ++lastNumber_;
    for (const std::string& name : names)
        items_[to + "/" + name] = items_.at(from + "/" + name);
}

void FakeFiles::moveTree(const std::string& from, const std::string& to) {
    const std::uint64_t number = items_.at(from).number;
    // What is moved into a folder keeps its name there.
    const std::string place = has(to) ? path::appendingPathComponent(to, path::lastPathComponent(from)) : to;
    copyTree(from, place);
    items_.at(place).number = number;
    removeTree(from);
}

void FakeFiles::removeTree(const std::string& path) {
    for (const std::string& name : entriesBelow(path))
        items_.erase(path + "/" + name);
    items_.erase(path);
}

bool FakeFiles::allows(const std::string& path, bool Item::*right) {
    const Item* found = followed(path);
    return found != nullptr && found->*right;
}

std::optional<std::vector<std::string>> FakeFiles::contentsOfDirectory(const std::string& path) {
    const Item* folder = item(path);
    if (folder == nullptr || folder->type != FileType::Directory || !folder->readable)
        return std::nullopt;
    std::vector<std::string> names;
    for (const std::string& name : entriesBelow(path))
        if (name.find('/') == std::string::npos)
            names.insert(names.begin(), name); // nobody may rely on an order
    return names;
}

std::vector<std::string> FakeFiles::entriesBelow(const std::string& path) {
    std::vector<std::string> names;
    const std::string prefix = path + "/";
    for (auto at = items_.upper_bound(prefix); at != items_.end() && at->first.rfind(prefix, 0) == 0; ++at)
        names.push_back(at->first.substr(prefix.size()));
    return names;
}

std::optional<platform::FileAttributes> FakeFiles::attributesOfItem(const std::string& path) {
    const Item* found = item(path);
    return found == nullptr ? std::nullopt : std::optional(platform::FileAttributes{found->type});
}

std::optional<platform::ItemIdentity> FakeFiles::identityOfItem(const std::string& path) {
    const Item* found = item(path);
    return found == nullptr ? std::nullopt : std::optional(platform::ItemIdentity{1, found->number, found->type, 0, 0});
}

std::optional<platform::FileOwner> FakeFiles::ownerOfItem(const std::string& path) {
    const Item* found = followed(path);
    return found == nullptr ? std::nullopt : std::optional(found->owner);
}

bool FakeFiles::succeeds(Operation operation, const std::string& path, ErrorOut error) {
    const bool fails = failures_.count({operation, path}) > 0;
    if (fails && error != nullptr)
        *error = foundation::Error::withDescription("Files", 513, "no " + path);
    return !fails;
}

bool FakeFiles::createDirectory(const std::string& path, ErrorOut error) {
    changes.push_back("create " + path);
    if (!succeeds(Operation::Create, path, error))
        return false;
    if (const Item* there = item(path)) {
        const bool ours = there->type == FileType::Directory && there->owner.userId == thisUser.userId;
        if (!ours && error != nullptr)
            *error = foundation::Error::withDescription("Files", 516, "taken " + path);
        return ours;
    }
    std::string above = path::deletingLastPathComponent(path);
    while (!has(above))
        above = path::deletingLastPathComponent(above);
    if (item(above)->type != FileType::Directory)
        return false;
    addFolder(path);
    return true;
}

bool FakeFiles::copyItem(const std::string& from, const std::string& to, ErrorOut error) {
    changes.push_back("copy " + from + " " + to);
    const bool possible = has(from) && isVacant(to);
    if (!succeeds(Operation::Copy, from, error))
        return false;
    if (possible)
        copyTree(from, to);
    return possible;
}

bool FakeFiles::moveItem(const std::string& from, const std::string& to, ErrorOut /*error*/) {
    changes.push_back("move " + from + " " + to);
    if (!has(from) || !isVacant(to))
        return false;
    moveTree(from, to);
    return true;
}

bool FakeFiles::removeItem(const std::string& path, ErrorOut error) {
    changes.push_back("remove " + path);
    if (!succeeds(Operation::Remove, path, error) || !has(path) || !folderTakesChanges(path))
        return false;
    removeTree(path);
    return true;
}

bool FakeFiles::removePrivateFolder(const std::string& path) {
    changes.push_back("removePrivateFolder " + path);
    const std::string closed = path + "/";
    for (const char* odd : {"//", "/./", "/../"})
        if (closed.front() != '/' || closed.find(odd) != std::string::npos)
            return false;
    const auto holds = [&](const std::string& folder) { return (folder + "/").rfind(closed, 0) == 0; };
    if (std::any_of(sharedFolders.begin(), sharedFolders.end(), holds))
        return false;
    const Item* folder = item(path);
    if (folder == nullptr || folder->type != FileType::Directory || folder->owner.userId != thisUser.userId)
        return false;
    removeTree(path);
    return true;
}

int FakeFiles::removeExtendedAttribute(const std::string& path, const char* name, int options) {
    changes.push_back("xattr " + path + " " + name + " " + std::to_string(options));
    Item* target = (options & platform::xattrNoFollow) != 0 ? item(path) : followed(path);
    if (target != nullptr && target->attributes.erase(name) > 0)
        return 0;
    errno = target == nullptr ? ENOENT : ENODATA;
    return -1;
}
