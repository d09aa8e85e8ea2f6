#include "platform/posix/DestroyFiles.h"

#include "foundation/PathString.h"

#include <algorithm>
#include <sys/stat.h>

namespace platform {

namespace {

bool exists(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

} // namespace

bool destroyFiles(FileChanges& changes, const std::string& folder, const std::vector<std::string>& names) {
    if (folder.empty() || !std::all_of(names.begin(), names.end(), foundation::path::isPlainName))
        return false;
    bool allGone = true;
    for (const std::string& name : names) {
        const std::string path = foundation::path::appendingPathComponent(folder, name);
        allGone = exists(path) && changes.removeItem(path) && allGone;
    }
    return allGone;
}

} // namespace platform
