#include "platform/linux/PathFacts.h"

#include "platform/posix/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

mode_t modeOf(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode : 0;
}

} // namespace

std::optional<std::string> readRegularFile(const std::string& path, std::size_t limit) {
    if (!S_ISREG(modeOf(path)))
        return std::nullopt;
    // The file can be exchanged between the two looks, so this open must not wait either.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    std::string bytes(std::min(limit, static_cast<std::size_t>(status.st_size)), '\0');
    std::size_t length = 0;
    while (length < bytes.size()) {
        const ssize_t count = ::read(file.get(), bytes.data() + length, bytes.size() - length);
        if (count < 0 && errno != EINTR)
            return std::nullopt;
        if (count == 0)
            break;
        length += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    bytes.resize(length);
    return bytes;
}

bool isExecutableFile(const std::string& path) {
    return S_ISREG(modeOf(path)) && ::access(path.c_str(), X_OK) == 0;
}

bool isFolder(const std::string& path) {
    return S_ISDIR(modeOf(path));
}

std::string resolvedPath(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> resolved(::realpath(path.c_str(), nullptr), &std::free);
    return resolved ? resolved.get() : std::string();
}

std::string linkTarget(const std::string& path) {
    std::array<char, PATH_MAX> buffer{};
    const ssize_t length = ::readlink(path.c_str(), buffer.data(), buffer.size());
    return length > 0 ? std::string(buffer.data(), static_cast<std::size_t>(length)) : std::string();
}

std::string executableOfProcess(const std::string& processFolder) {
    static constexpr std::string_view deleted = " (deleted)";
    std::string path = linkTarget(processFolder + "/exe");
    if (std::string_view(path).ends_with(deleted))
        path.resize(path.size() - deleted.size());
    return path;
}

} // namespace platform
