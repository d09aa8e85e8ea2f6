#include "platform/transfers/DestinationFile.h"

#include "platform/Transfers.h"
#include "platform/posix/FileIdentity.h"
#include "platform/posix/SystemCalls.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace platform::transfers {

namespace {

constexpr std::size_t bufferSize = std::size_t{256} << 10;

TransferFailure createFailure(int errorNumber) {
    return fileFailure(URLErrorCode::cannotCreateFile, "The file could not be created", errorNumber);
}

TransferFailure writeFailure(int errorNumber) {
    return fileFailure(URLErrorCode::cannotWriteToFile, "The file could not be written", errorNumber);
}

FileDescriptor createIn(int folder, const std::string& name) {
    return FileDescriptor(
        ::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
}

// Takes the name away from a file that may be replaced. The old file is not emptied: it may have other names, and
// another download may still be writing it.
bool clearName(int folder, const std::string& name, const SourceFile* source) {
    struct stat status {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    const bool replaceable = S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
    if (!replaceable || (source != nullptr && source->isSameAs(status)))
        return false;
    return ::unlinkat(folder, name.c_str(), 0) == 0;
}

} // namespace

foundation::Result<std::unique_ptr<DestinationFile>, TransferFailure>
DestinationFile::create(const std::string& path, bool allowOverwrite, const SourceFile* source) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos || path.find('\0') != std::string::npos)
        return createFailure(EINVAL);
    const std::string name = path.substr(slash + 1);
    FileDescriptor folder(::open(path.substr(0, slash + 1).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen())
        return createFailure(errno);
    FileDescriptor file = createIn(folder.get(), name);
    if (!file.isOpen() && errno == EEXIST && allowOverwrite) {
        if (!clearName(folder.get(), name, source))
            return createFailure(EEXIST);
        file = createIn(folder.get(), name);
    }
    if (!file.isOpen())
        return createFailure(errno);
    return std::unique_ptr<DestinationFile>(new DestinationFile(std::move(folder), name, std::move(file)));
}

DestinationFile::~DestinationFile() {
    if (!kept_)
        remove();
}

std::optional<TransferFailure> DestinationFile::write(std::string_view bytes) {
    if (!writeAll(file_.get(), bytes))
        return writeFailure(errno);
    return std::nullopt;
}

foundation::Result<std::uint64_t, TransferFailure> DestinationFile::copyFrom(const SourceFile& source,
                                                                             std::size_t length) {
    if (copiesInKernel_) {
        const ssize_t count = copyPiece(source.descriptor(), file_.get(), length);
        if (count > 0)
            return static_cast<std::uint64_t>(count);
        // Some file systems refuse, some report an end at once; reading and writing tells an end from a fault.
        copiesInKernel_ = false;
    }
    buffer_.resize(std::min(length, bufferSize));
    const ssize_t count = readSome(source.descriptor(), buffer_.data(), buffer_.size());
    if (count < 0)
        return fileFailure(URLErrorCode::noPermissionsToReadFile, "The file could not be read", errno);
    if (auto failure = write({buffer_.data(), static_cast<std::size_t>(count)}))
        return *failure;
    return static_cast<std::uint64_t>(count);
}

std::optional<TransferFailure> DestinationFile::keep() {
    // A duplicate, because a file system may report a failed write only when the file is closed, and the file must stay
    // open to be recognised and removed then.
    const int closed = FileDescriptor(::fcntl(file_.get(), F_DUPFD_CLOEXEC, 0)).close();
    if (closed != 0)
        return writeFailure(closed);
    kept_ = true;
    return std::nullopt;
}

void DestinationFile::remove() const {
    struct stat present {};
    if (::fstatat(folder_.get(), name_.c_str(), &present, AT_SYMLINK_NOFOLLOW) == 0 &&
        identityOf(present) == identityOf(file_.get()))
        ::unlinkat(folder_.get(), name_.c_str(), 0);
}

} // namespace platform::transfers
