#pragma once

#include "foundation/Result.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/transfers/TransferFailure.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace platform::transfers {

// A regular file opened for reading. Anything else (a folder, a pipe, a device) is refused without being opened.
class SourceFile {
public:
    static foundation::Result<SourceFile, TransferFailure> open(const std::string& path);

    int descriptor() const { return descriptor_.get(); }

    // Its length when it was opened.
    std::uint64_t length() const { return static_cast<std::uint64_t>(status_.st_size); }

    // Whether the status is this very file's.
    bool isSameAs(const struct stat& status) const;

    // All of it, once; nothing when it cannot be read or is longer than the limit.
    std::optional<std::string> readAll(std::size_t limit) const;

private:
    SourceFile(FileDescriptor descriptor, const struct stat& status)
        : descriptor_(std::move(descriptor)), status_(status) {}

    FileDescriptor descriptor_;
    struct stat status_;
};

} // namespace platform::transfers
