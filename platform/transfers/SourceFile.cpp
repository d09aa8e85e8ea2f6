#include "platform/transfers/SourceFile.h"

#include "platform/Transfers.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace platform::transfers {

namespace {

TransferFailure openFailure(int errorNumber) {
    const bool denied = errorNumber == EACCES || errorNumber == EPERM;
    const auto code = denied ? URLErrorCode::noPermissionsToReadFile : URLErrorCode::fileDoesNotExist;
    return fileFailure(code, "The file could not be opened", errorNumber);
}

std::optional<TransferFailure> kindFailure(const struct stat& status) {
    if (S_ISREG(status.st_mode))
        return std::nullopt;
    if (S_ISDIR(status.st_mode))
        return fileFailure(URLErrorCode::fileIsDirectory, "The file could not be read", EISDIR);
    return TransferFailure{URLErrorCode::fileDoesNotExist, "The file could not be read: not a regular file.", {}};
}

} // namespace

foundation::Result<SourceFile, TransferFailure> SourceFile::open(const std::string& path) {
    if (path.find('\0') != std::string::npos)
        return openFailure(ENOENT);
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return openFailure(errno);
    if (auto failure = kindFailure(status))
        return *failure;
    // Non-blocking, in case a pipe has taken the name since; then the second look refuses it.
    FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!descriptor.isOpen() || ::fstat(descriptor.get(), &status) != 0)
        return openFailure(errno);
    if (auto failure = kindFailure(status))
        return *failure;
    return SourceFile(std::move(descriptor), status);
}

bool SourceFile::isSameAs(const struct stat& status) const {
    return status.st_dev == status_.st_dev && status.st_ino == status_.st_ino;
}

std::optional<std::string> SourceFile::readAll(std::size_t limit) const {
    std::string bytes;
    std::array<char, 65536> piece{};
    while (true) {
        const ssize_t count = ::pread(descriptor(), piece.data(), piece.size(), static_cast<off_t>(bytes.size()));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            return bytes;
        bytes.append(piece.data(), static_cast<std::size_t>(count));
        if (bytes.size() > limit)
            return std::nullopt;
    }
}

} // namespace platform::transfers
