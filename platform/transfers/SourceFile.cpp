#include "platform/transfers/SourceFile.h"

#include "platform/Transfers.h"
#include "platform/posix/FileIdentity.h"

#include <cerrno>
#include <utility>

namespace platform::transfers {

namespace {

TransferFailure openFailure(int errorNumber) {
    switch (errorNumber) {
    case EISDIR:
        return fileFailure(URLErrorCode::fileIsDirectory, "The file could not be read", EISDIR);
    case EOPNOTSUPP:
        return {URLErrorCode::fileDoesNotExist, "The file could not be read: not a regular file.", {}};
    case EACCES:
    case EPERM:
        return fileFailure(URLErrorCode::noPermissionsToReadFile, "The file could not be opened", errorNumber);
    default:
        return fileFailure(URLErrorCode::fileDoesNotExist, "The file could not be opened", errorNumber);
    }
}

} // namespace

foundation::Result<SourceFile, TransferFailure> SourceFile::open(const std::string& path) {
    if (path.find('\0') != std::string::npos)
        return openFailure(ENOENT);
    struct stat status {};
    FileDescriptor descriptor = openRegularFile(path, status);
    if (!descriptor.isOpen())
        return openFailure(errno);
    return SourceFile(std::move(descriptor), status);
}

bool SourceFile::isSameAs(const struct stat& status) const {
    return identityOf(status) == identityOf(status_);
}

std::optional<std::string> SourceFile::readAll(std::size_t limit) const {
    auto bytes = platform::readAll(descriptor(), limit + 1);
    return bytes && bytes->size() <= limit ? std::move(bytes) : std::nullopt;
}

} // namespace platform::transfers
