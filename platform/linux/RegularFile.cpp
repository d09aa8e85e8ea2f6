#include "platform/linux/RegularFile.h"

#include "platform/posix/FileDescriptor.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

bool isRegularFile(const std::string& path) {
    struct stat status{};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

std::optional<std::string> readRegularFile(const std::string& path, std::size_t limit) {
    if (!isRegularFile(path)) {
        return std::nullopt;
    }
    // The file can be exchanged between the two looks, so this open must not wait either.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status{};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    std::string bytes(std::min(limit, static_cast<std::size_t>(status.st_size)), '\0');
    std::size_t length = 0;
    while (length < bytes.size()) {
        const ssize_t count = ::read(file.get(), bytes.data() + length, bytes.size() - length);
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        length += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    bytes.resize(length);
    return bytes;
}

bool isExecutableFile(const std::string& path) { return isRegularFile(path) && ::access(path.c_str(), X_OK) == 0; }

} // namespace platform
