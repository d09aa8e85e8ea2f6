#include "platform/posix/FileDescriptor.h"

#include "platform/posix/SystemCalls.h"

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
