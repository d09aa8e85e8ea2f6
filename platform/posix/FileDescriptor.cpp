#include "platform/posix/FileDescriptor.h"

#include "platform/posix/SystemCalls.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace platform {

namespace {

// A program that was started without some standard stream gets its number for a pipe, and a child would then have one
// of its streams overwritten while the other is put in place.
FileDescriptor aboveStandardStreams(FileDescriptor descriptor) {
    if (descriptor.get() > STDERR_FILENO)
        return descriptor;
    return FileDescriptor(::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

} // namespace

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
        close();
        descriptor_ = other.release();
    }
    return *this;
}

int FileDescriptor::close() {
    if (!isOpen())
        return 0;
    const int saved = errno;
    // An interrupted close has closed the descriptor all the same.
    const int result = ::close(release()) == 0 || errno == EINTR ? 0 : errno;
    errno = saved;
    return result;
}

bool openPipe(FileDescriptor& readEnd, FileDescriptor& writeEnd) {
    FileDescriptor lower;
    FileDescriptor upper;
    if (!makePipe(lower, upper))
        return false;
    readEnd = aboveStandardStreams(std::move(lower));
    writeEnd = aboveStandardStreams(std::move(upper));
    return readEnd.isOpen() && writeEnd.isOpen();
}

FileDescriptor openRegularFile(const std::string& path, struct stat& status) {
    const auto isRegular = [&status] {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EOPNOTSUPP;
        return S_ISREG(status.st_mode);
    };
    if (::stat(path.c_str(), &status) != 0 || !isRegular())
        return FileDescriptor();
    // The file can be exchanged between the two looks, so this open must not wait either.
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (file.isOpen() && (::fstat(file.get(), &status) != 0 || !isRegular()))
        file.close();
    return file;
}

ssize_t readSome(int descriptor, void* buffer, std::size_t size) {
    ssize_t count = 0;
    do
        count = ::read(descriptor, buffer, size);
    while (count < 0 && errno == EINTR);
    return count;
}

std::optional<std::string> readAll(int descriptor, std::size_t limit) {
    std::string bytes;
    std::array<char, 65536> buffer;
    while (bytes.size() < limit) {
        const ssize_t count = readSome(descriptor, buffer.data(), std::min(buffer.size(), limit - bytes.size()));
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            break;
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return bytes;
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace platform
