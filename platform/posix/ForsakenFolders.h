#pragma once

#include "platform/posix/FileDescriptor.h"

#include <chrono>
#include <functional>
#include <string>

namespace platform {

// Keeps an open folder from being taken for a forsaken one, for as long as the result is open: at the latest until this
// process ends, however it does. Not open where the file system has no locks.
FileDescriptor keepFolder(const std::string& path);

// Removes the folders that runs of this user which were killed have left in the temporary root: those that bear a name
// this program gives to folders, belong to this user, and are kept by no process. Those that `isInUse` says yes to are
// left alone as well, and so are those changed less than `youngest` ago: whoever makes a folder keeps it a moment
// later. Any thread; failures are of no consequence.
void removeForsakenFolders(const std::string& temporaryRoot, const std::function<bool(const std::string&)>& isInUse,
                           std::chrono::seconds youngest = std::chrono::seconds(2));

} // namespace platform
