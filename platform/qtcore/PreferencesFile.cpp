#include "platform/qtcore/PreferencesFile.h"

#include "foundation/PathString.h"
#include "platform/linux/PathFacts.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/qtcore/FileReplacement.h"
#include "platform/qtcore/SettingsText.h"

#include <cerrno>
#include <chrono>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace platform {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t largestFile = std::size_t{1} << 20;
constexpr auto longestLockWait = 500ms;

bool makeFolder(const std::string& path) {
    if (path.empty() || isFolder(path))
        return !path.empty();
    return makeFolder(foundation::path::deletingLastPathComponent(path)) &&
           (::mkdir(path.c_str(), 0700) == 0 || isFolder(path));
}

// Keeps other programs of this kind from changing files in the folder. The lock is the system's and ends with the
// process; there is no file for it. A file system without locks, or a folder that somebody keeps locked, must not keep
// the settings from being stored.
class FolderLock {
public:
    explicit FolderLock(const std::string& folder)
        : folder_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        const auto limit = std::chrono::steady_clock::now() + longestLockWait;
        while (::flock(folder_.get(), LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR) &&
               std::chrono::steady_clock::now() < limit)
            std::this_thread::sleep_for(1ms);
    }

private:
    FileDescriptor folder_;
};

} // namespace

PreferencesFile::PreferencesFile(const std::string& path) : path_(resolvedPath(path)) {
    if (path_.empty())
        path_ = path;
}

std::optional<std::string> PreferencesFile::read() const {
    struct stat status {};
    if (::lstat(path_.c_str(), &status) != 0)
        return errno == ENOENT ? std::optional<std::string>("") : std::nullopt;
    auto bytes = S_ISREG(status.st_mode) ? readRegularFile(path_, largestFile + 1) : std::nullopt;
    return bytes && bytes->size() <= largestFile ? std::move(bytes) : std::nullopt;
}

std::optional<std::string> PreferencesFile::apply(const Changes& changes) const {
    const std::string folder = foundation::path::deletingLastPathComponent(path_);
    if (!makeFolder(folder))
        return std::nullopt;
    const FolderLock lock(folder);
    const auto before = read();
    if (!before)
        return std::nullopt;
    SettingsText text(*before);
    for (const auto& [key, change] : changes)
        if (!change.isFirst || !text.value(key))
            text.set(key, change.value);
    return text.bytes() == *before || replaceFile(path_, text.bytes()) ? std::optional(text.bytes()) : std::nullopt;
}

} // namespace platform
