#include "platform/posix/FileDescriptor.h"

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
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return false;
    readEnd = aboveStandardStreams(FileDescriptor(ends[0]));
    writeEnd = aboveStandardStreams(FileDescriptor(ends[1]));
    return readEnd.isOpen() && writeEnd.isOpen();
}

} // namespace platform
