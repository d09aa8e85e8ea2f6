#pragma once

#include "foundation/Error.h"

#include <optional>
#include <string>
#include <vector>

// Replacing an application bundle, with administrator rights where needed, and taking the download mark off it. All
// operations block; those that can fail fill `error` when one is given.
namespace NSFileManager::ExtendedAttributes {

using ErrorOut = std::optional<foundation::Error>*;

// Replaces the item at `overPath` by a copy of the source; with administrator rights when the item or its folder cannot
// be written.
bool copyPathWithAuthentication(const std::string& source, const std::string& overPath, ErrorOut error);

// Moves the source over the destination as administrator; the old item is kept aside until the new one is in place.
bool _copyPathWithForcedAuthentication(const std::string& source, const std::string& toPath, ErrorOut error);

// Moves the source over the destination as administrator; the old item is deleted first.
bool copyPathWithForcedAuthenticationWithoutTmpFile(const std::string& source, const std::string& toPath,
                                                    ErrorOut error);

// A free path beside the bundle, named after its version; gives up after a million candidates.
std::string _temporaryCopyNameForPath(const std::string& bundlePath);

// The names of leftover temporary copies beside the bundle; nothing when there are none or the folder cannot be listed.
std::optional<std::vector<std::string>> _temporaryFailedCopiesForPath(const std::string& bundlePath);

// 0, or -1 with errno; EDOM for a path that no file can have.
int removeXAttr(const char* name, const std::string& fromFile, int options);

// Takes the quarantine mark off the item and, in a folder, off everything below it; never follows a link. Failures are
// of no consequence.
void releaseFromQuarantine(const std::string& path);

} // namespace NSFileManager::ExtendedAttributes
