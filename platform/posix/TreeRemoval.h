#pragma once

#include "platform/posix/ItemPlace.h"

#include <chrono>
#include <functional>
#include <optional>

namespace platform {

// Removes an item with all below it, by descriptor. A link itself is removed, never its target. Folders of this user
// that may not be changed are opened up. Fails before any change where the item's own folder may not be changed, and at
// a folder where another volume begins. What somebody else removes meanwhile is no failure.
void removeItem(const ItemPlace& place);

using RemovalLimit = std::optional<std::chrono::steady_clock::time_point>;

// The same for a folder, once the check of the opened folder has not thrown. False when the time was over before the
// end: then a part of it is left.
bool removeFolder(const ItemPlace& place, const std::function<void(int folder)>& check, RemovalLimit limit = {});

// Removes the item only if it is still that one. What took its place is left, and no failure.
void removeIfSame(const ItemPlace& place, const FileIdentity& identity);

// Throws when this user may not change the entries of the folder that holds the item.
void requireChangeableFolder(const ItemPlace& place);

} // namespace platform
