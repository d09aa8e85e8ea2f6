#pragma once

#include "platform/posix/ItemPlace.h"

namespace platform {

// Renames an item; anything at the new place makes it fail. 0 or the error number.
int renameUnique(const ItemPlace& from, const ItemPlace& to);

// The same for file systems that cannot do it in one call: an empty item, made at the new place only if nothing is
// there, is replaced.
int renameOverPlaceholder(const ItemPlace& from, const ItemPlace& to);

} // namespace platform
