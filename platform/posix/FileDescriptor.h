#pragma once

#include <string_view>
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

// Writes all bytes, waiting as long as that takes. False with errno.
bool writeAll(int descriptor, std::string_view bytes);

} // namespace platform
