#pragma once

#include "platform/posix/FileIdentity.h"

#include <optional>
#include <string>

namespace platform {

// One end of a copy: an open folder, the item's name there, and its path for error texts.
struct CopyEnd {
    int folder = -1;
    const char* name = nullptr;
    std::string path;
};

using MadeItem = std::optional<FileIdentity>;

// All of these throw on failure. `made`, where given, gets the identity of the destination as soon as it is there,
// which nothing was before.

// Copies a regular file with its traits. Nothing else is ever opened.
void copyRegularFile(const CopyEnd& from, const CopyEnd& to, MadeItem* made = nullptr);

// Copies a link itself, with its times.
void copySymbolicLink(const CopyEnd& from, const CopyEnd& to, MadeItem* made = nullptr);

// Gives the open file or folder the mode without the set-id bits, the times, and for the superuser the owner.
void applyTraits(int descriptor, const struct stat& traits, const std::string& path);

} // namespace platform
