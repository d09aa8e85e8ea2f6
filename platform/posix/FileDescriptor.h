#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>
#include <utility>

namespace platform {

// Owns one open file descriptor.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { close(); }

    // The descriptor, or -1 when there is none.
    int get() const { return descriptor_; }
    bool isOpen() const { return descriptor_ >= 0; }

    // Gives the descriptor away.
    int release() { return std::exchange(descriptor_, -1); }

    // Closes now. 0, or the error number of a delayed write that failed.
    int close();

private:
    int descriptor_ = -1;
};

// Makes a pipe whose ends close in children and have none of the numbers of the standard streams. False with errno.
bool openPipe(FileDescriptor& readEnd, FileDescriptor& writeEnd);

// Opens a regular file for reading. Not open, with errno, for anything else, which is never opened either: EISDIR for a
// folder, EOPNOTSUPP for a device, pipe or socket.
FileDescriptor openRegularFile(const std::string& path, struct stat& status);

// Reads what comes next, as far as the buffer goes; interruptions are no failure. 0 at the end, -1 with errno.
ssize_t readSome(int descriptor, void* buffer, std::size_t size);

// Reads to the end, but no more than the limit. Nothing, with errno, when that fails.
std::optional<std::string> readAll(int descriptor, std::size_t limit);

// Writes all bytes, waiting as long as that takes. False with errno.
bool writeAll(int descriptor, std::string_view bytes);

} // namespace platform
