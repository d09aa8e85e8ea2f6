#include "platform/posix/FileFailure.h"
#include "platform/posix/SystemCalls.h"

#include <cerrno>
#include <copyfile.h>
#include <crt_externs.h>
#include <fcntl.h>
#include <sys/attr.h>
#include <sys/clonefile.h>
#include <sys/stdio.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace platform {

namespace {

// Flags that would make the copy one that nobody can change or remove.
constexpr unsigned lockingFlags = UF_IMMUTABLE | UF_APPEND | SF_IMMUTABLE | SF_APPEND;

bool closeOnExec(int descriptor) {
    return ::fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0;
}

// This user's own folder that he may not read is opened up, where he may change the folder that it is in.
bool openUp(int folder, const char* name) {
    struct stat status {};
    return ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && ::faccessat(folder, ".", W_OK | X_OK, AT_EACCESS) == 0 &&
           ::fchmodat(folder, name, (status.st_mode & 07777) | S_IRWXU, AT_SYMLINK_NOFOLLOW) == 0;
}

// A copying state of the system; null when there is no memory left for one.
class CopyState {
public:
    CopyState() : state_(::copyfile_state_alloc()) {}
    ~CopyState() {
        if (state_ != nullptr)
            ::copyfile_state_free(state_);
    }
    CopyState(const CopyState&) = delete;
    CopyState& operator=(const CopyState&) = delete;

    copyfile_state_t get() const { return state_; }
    off_t copied() const {
        off_t count = 0;
        return ::copyfile_state_get(state_, COPYFILE_STATE_COPIED, &count) == 0 ? count : 0;
    }

private:
    copyfile_state_t state_;
};

} // namespace

// A program that another thread starts between the two calls could keep an end open; ours start with nothing open.
bool makePipe(FileDescriptor& readEnd, FileDescriptor& writeEnd) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        return false;
    readEnd = FileDescriptor(ends[0]);
    writeEnd = FileDescriptor(ends[1]);
    return closeOnExec(ends[0]) && closeOnExec(ends[1]);
}

// The system opens no folder without the right to read it. Links are refused where a tree is being removed, and there a
// folder of this user's own must not be what stops it.
FileDescriptor openPlace(int folder, const char* name, Links links) {
    const int noLinks = links == Links::Refused ? O_NOFOLLOW : 0;
    const auto open = [&] {
        return FileDescriptor(::openat(folder, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | noLinks));
    };
    FileDescriptor place = open();
    if (place.isOpen() || errno != EACCES || links != Links::Refused)
        return place;
    if (openUp(folder, name))
        return open();
    errno = EACCES;
    return place;
}

bool changeModeOfPlace(int place, mode_t mode) {
    return ::fchmod(place, mode) == 0;
}

bool isMountRoot(int folder) {
    struct attrlist wanted {};
    wanted.bitmapcount = ATTR_BIT_MAP_COUNT;
    wanted.dirattr = ATTR_DIR_MOUNTSTATUS;
    struct {
        std::uint32_t length = 0;
        std::uint32_t status = 0;
    } answer;
    return ::fgetattrlist(folder, &wanted, &answer, sizeof answer, 0) == 0 &&
           (answer.status & DIR_MNTSTATUS_MNTPOINT) != 0;
}

bool renameExclusively(int fromFolder, const char* from, int toFolder, const char* to) {
    return ::renameatx_np(fromFolder, from, toFolder, to, RENAME_EXCL) == 0;
}

// The clone has the attributes and access lists of the file, too. A mode that shuts its own owner out ends the attempt.
FileDescriptor cloneFile(int from, int toFolder, const char* to) {
    struct stat status {};
    if (::fstat(from, &status) != 0 || (static_cast<unsigned>(status.st_flags) & lockingFlags) != 0 ||
        ::fclonefileat(from, toFolder, to, 0) != 0)
        return FileDescriptor();
    FileDescriptor clone(::openat(toFolder, to, O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (!clone.isOpen())
        ::unlinkat(toFolder, to, 0);
    return clone;
}

// The system has no call for a part of a file.
ssize_t copyPiece(int /*from*/, int /*to*/, std::size_t /*length*/) {
    return 0;
}

off_t copyDataInSystem(int from, int to) {
    const off_t fromStart = ::lseek(from, 0, SEEK_CUR);
    const off_t toStart = ::lseek(to, 0, SEEK_CUR);
    const CopyState state;
    if (fromStart < 0 || toStart < 0 || state.get() == nullptr)
        return 0;
    // Whatever ended it, what has come over counts.
    ::fcopyfile(from, to, state.get(), COPYFILE_DATA);
    const off_t copied = state.copied();
    ::lseek(from, fromStart + copied, SEEK_SET);
    ::lseek(to, toStart + copied, SEEK_SET);
    return copied;
}

// Resource forks and the quarantine mark are among the attributes.
void copyExtendedAttributes(int from, int to, const std::string& /*fromPath*/, const std::string& toPath) {
    if (::fcopyfile(from, to, nullptr, COPYFILE_XATTR | COPYFILE_ACL) != 0 && errno != ENOTSUP)
        throwErrno(FileAccess::Writing, toPath);
}

int removeAttribute(const char* path, const char* name, Links links) {
    return ::removexattr(path, name, links == Links::Refused ? XATTR_NOFOLLOW : 0);
}

std::array<timespec, 2> timesOf(const struct stat& status) {
    return {status.st_atimespec, status.st_mtimespec};
}

char** environment() {
    return *::_NSGetEnviron();
}

pid_t forkAgain() {
    return ::fork();
}

void endWithStarter() {}

void closeInPrograms() {
    const int end = ::getdtablesize();
    for (int descriptor = STDERR_FILENO + 1; descriptor < end; ++descriptor)
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
}

} // namespace platform
