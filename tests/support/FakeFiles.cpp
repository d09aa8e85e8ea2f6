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

std::string FakeFiles::resolved(const std::string& path, Links links) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos || slash + 1 == path.size())
        return path;
    const std::string folder = slash == 0 ? "" : resolved(path.substr(0, slash), Links::Followed);
    const std::string place = folder + path.substr(slash);
    const Item* found = item(place);
    if (links == Links::Kept || found == nullptr || found->type != FileType::SymbolicLink)
        return place;
    return resolved(found->content.front() == '/' ? found->content : folder + "/" + found->content, links);
}

std::int64_t FakeFiles::folderRefusal(const std::string& place) {
    const Item* folder = item(path::deletingLastPathComponent(place));
    if (folder == nullptr || folder->type != FileType::Directory)
        return missingCode;
    return folder->writable ? 0 : noPermissionCode;
}

std::int64_t FakeFiles::refusal(const std::string& from, const std::string& to) {
    if ((to + "/").rfind(from + "/", 0) == 0 && to != from)
        return 512;
    return has(to) ? takenCode : folderRefusal(to);
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
    const Item* folder = followed(path);
    if (folder == nullptr || folder->type != FileType::Directory || !folder->readable)
        return std::nullopt;
    std::vector<std::string> names;
    for (const std::string& name : entriesBelow(resolved(path, Links::Followed)))
        if (name.find('/') == std::string::npos)
            names.insert(names.begin(), name); // nobody may rely on an order
    return names;
}

std::vector<std::string> FakeFiles::entriesBelow(const std::string& path) {
    std::vector<std::string> names;
    const std::string prefix = resolved(path, Links::Kept) + "/";
    for (auto at = items_.upper_bound(prefix); at != items_.end() && at->first.rfind(prefix, 0) == 0; ++at)
        names.push_back(at->first.substr(prefix.size()));
    return names;
}

std::optional<platform::FileAttributes> FakeFiles::attributesOfItem(const std::string& path) {
    const Item* found = itself(path);
    return found == nullptr ? std::nullopt : std::optional(platform::FileAttributes{found->type});
}

std::optional<platform::ItemIdentity> FakeFiles::identityOfItem(const std::string& path) {
    const Item* found = itself(path);
    return found == nullptr ? std::nullopt : std::optional(platform::ItemIdentity{1, found->number, found->type, 0, 0});
}

std::optional<platform::FileOwner> FakeFiles::ownerOfItem(const std::string& path) {
    const Item* found = followed(path);
    return found == nullptr ? std::nullopt : std::optional(found->owner);
}

bool FakeFiles::succeeds(std::int64_t code, const std::string& path, ErrorOut error) {
    if (code != 0 && error != nullptr)
        *error = foundation::Error::withDescription("NSCocoaErrorDomain", code, "no " + path);
    return code == 0;
}

bool FakeFiles::createDirectory(const std::string& path, ErrorOut error) {
    changes.push_back("create " + path);
    if (fails(Operation::Create, path) || path.find('\0') != std::string::npos)
        return succeeds(noPermissionCode, path, error);
    const std::string place = resolved(path, Links::Kept);
    if (const Item* there = item(place)) {
        const std::int64_t code = there->type == FileType::Directory ? noPermissionCode : takenCode;
        const bool ours = code == noPermissionCode && there->owner.userId == thisUser.userId;
        return succeeds(ours ? 0 : code, path, error);
    }
    std::string above = path::deletingLastPathComponent(place);
    while (!has(above))
        above = path::deletingLastPathComponent(above);
    if (item(above)->type != FileType::Directory)
        return succeeds(noPermissionCode, path, error);
    addFolder(place);
    return true;
}

bool FakeFiles::copyItem(const std::string& from, const std::string& to, ErrorOut error) {
    changes.push_back("copy " + from + " " + to);
    const std::string source = resolved(from, Links::Kept);
    const std::string place = resolved(to, Links::Kept);
    const std::int64_t code = has(source) ? refusal(source, place) : 260;
    if (!succeeds(fails(Operation::Copy, from) ? noPermissionCode : code, from, error))
        return false;
    copyTree(source, place);
    return true;
}

bool FakeFiles::moveItem(const std::string& from, const std::string& to, ErrorOut error) {
    changes.push_back("move " + from + " " + to);
    const std::string source = resolved(from, Links::Kept);
    const std::string place = resolved(to, Links::Kept);
    if (!succeeds(has(source) ? refusal(source, place) : missingCode, from, error))
        return false;
    moveTree(source, place);
    return true;
}

bool FakeFiles::removeItem(const std::string& path, ErrorOut error) {
    changes.push_back("remove " + path);
    const std::string place = resolved(path, Links::Kept);
    const std::int64_t code = has(place) ? folderRefusal(place) : missingCode;
    if (!succeeds(fails(Operation::Remove, path) ? noPermissionCode : code, path, error))
        return false;
    removeTree(place);
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
    const Item* folder = itself(path);
    if (folder == nullptr || folder->type != FileType::Directory || folder->owner.userId != thisUser.userId)
        return false;
    removeTree(resolved(path, Links::Kept));
    return true;
}

int FakeFiles::removeExtendedAttribute(const std::string& path, const char* name, int options) {
    changes.push_back("xattr " + path + " " + name + " " + std::to_string(options));
    Item* target = (options & platform::xattrNoFollow) != 0 ? itself(path) : followed(path);
    if (target != nullptr && target->attributes.erase(name) > 0)
        return 0;
    errno = target == nullptr ? ENOENT : ENODATA;
    return -1;
}
