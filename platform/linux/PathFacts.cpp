#include "platform/linux/PathFacts.h"

#include "platform/posix/FileDescriptor.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <memory>
#include <string_view>

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
    struct stat status {};
    const FileDescriptor file = openRegularFile(path, status);
    return file.isOpen() ? readAll(file.get(), limit) : std::nullopt;
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
