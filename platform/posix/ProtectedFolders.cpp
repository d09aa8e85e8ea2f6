#include "platform/posix/ProtectedFolders.h"

#include "foundation/PathString.h"
#include "platform/posix/FileFailure.h"
#include "platform/posix/SystemCalls.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

FileFailure refused(const std::string& path, int errorNumber, std::string reason) {
    return {FileAccess::Writing, path, errorNumber, std::move(reason)};
}

} // namespace

void ProtectedFolders::requirePlainPath(const std::string& path) {
    const FileFailure failure = refused(path, EINVAL, "it is no plain absolute path");
    if (!foundation::path::isPath(path) || path.front() != '/')
        throw FileFailure(failure);
    for (std::size_t at = 1; at <= path.size();) {
        const std::size_t end = std::min(path.find('/', at), path.size());
        const std::string name = path.substr(at, end - at);
        if (name.empty() || foundation::path::isDots(name))
            throw FileFailure(failure);
        at = end + 1;
    }
}

void ProtectedFolders::requireRemovable(int folder, const std::string& path) const {
    struct stat status {};
    if (::fstat(folder, &status) != 0)
        throwErrno(FileAccess::Writing, path);
    if (status.st_uid != ::geteuid())
        throw refused(path, EPERM, "the folder belongs to another user");
    if (contains(identities(), identityOf(status)))
        throw refused(path, EPERM, "the folder holds more than its own");
}

std::vector<FileIdentity> ProtectedFolders::identities() const {
    std::vector<FileIdentity> all;
    const auto add = [&all](const std::string& path) {
        const FileDescriptor folder = openPlace(AT_FDCWD, path.c_str(), Links::Followed);
        for (const FileIdentity& identity : ancestry(folder.get()))
            all.push_back(identity);
    };
    add("/");
    for (const std::string& path : paths_) {
        // By its text as well as by "..": a link on the way has parents of both kinds, and the end may not exist.
        for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1))
            add(path.substr(0, end));
        if (!path.empty())
            add(path);
    }
    return all;
}

} // namespace platform
