#include "platform/posix/FolderCreation.h"

#include "foundation/PathString.h"
#include "platform/posix/FileFailure.h"
#include "platform/posix/SystemCalls.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace platform {

namespace {

constexpr auto writing = FileAccess::Writing;

// What is there may not be taken for a folder that this program made: another user could have put it there.
void requireOwnFolder(const FileDescriptor& parent, const std::string& name, const std::string& path) {
    struct stat status {};
    if (::fstatat(parent.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        throwErrno(writing, path);
    if (S_ISLNK(status.st_mode))
        throw FileFailure{writing, path, EEXIST, "there is a link"};
    if (!S_ISDIR(status.st_mode))
        throw FileFailure{writing, path, EEXIST, "there is an item that is no folder"};
    if (status.st_uid != ::geteuid())
        throw FileFailure{writing, path, EPERM, "the folder belongs to another user"};
}

bool makeFolder(const FileDescriptor& parent, const std::string& name, const std::string& path) {
    if (::mkdirat(parent.get(), name.c_str(), S_IRWXU) == 0)
        return true;
    if (errno != EEXIST)
        throwErrno(writing, path);
    return false;
}

} // namespace

void createFolders(const std::string& path, const std::function<void(const MadeFolder&)>& made) {
    if (!foundation::path::isPath(path))
        throw FileFailure{writing, path, path.empty() ? ENOENT : EINVAL, {}};
    std::vector<std::string> names = foundation::path::pathComponents(path);
    std::erase(names, "/");
    std::string at = path.front() == '/' ? "/" : ".";
    FileDescriptor parent = openPlace(AT_FDCWD, at.c_str(), Links::Followed);
    if (at == ".")
        at.clear();
    for (std::size_t index = 0; index < names.size(); ++index) {
        const std::string& name = names[index];
        if (!at.empty() && at.back() != '/')
            at += '/';
        at += name;
        const bool last = index + 1 == names.size();
        FileDescriptor folder = last ? FileDescriptor() : openPlace(parent.get(), name.c_str(), Links::Followed);
        if (!folder.isOpen() && (last || errno == ENOENT)) {
            const bool isNew = makeFolder(parent, name, path);
            if (last && !isNew)
                requireOwnFolder(parent, name, path);
            folder = openPlace(parent.get(), name.c_str(), Links::Followed);
            struct stat status {};
            if (isNew && folder.isOpen() && ::fstat(folder.get(), &status) == 0)
                made({at, identityOf(status), parent.get()});
        }
        if (!folder.isOpen())
            throwErrno(writing, path);
        parent = std::move(folder);
    }
}

} // namespace platform
