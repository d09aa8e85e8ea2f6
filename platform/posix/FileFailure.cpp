#include "platform/posix/FileFailure.h"

#include <cerrno>
#include <system_error>

namespace platform {

namespace {

std::int64_t cocoaCode(FileAccess access, int errorNumber) {
    const bool reading = access == FileAccess::Reading;
    switch (errorNumber) {
    case ENOENT:
        return reading ? 260 : 4;
    case EACCES:
    case EPERM:
        return reading ? 257 : 513;
    case EEXIST:
        return 516;
    case ENOSPC:
    case EDQUOT:
        return 640;
    case EROFS:
        return 642;
    default:
        return reading ? 256 : 512;
    }
}

} // namespace

void throwErrno(FileAccess access, const std::string& path) {
    throw FileFailure{access, path, errno, {}};
}

std::string descriptionOf(const FileFailure& failure, const std::string& verb) {
    const std::string reason =
        failure.reason.empty() ? std::generic_category().message(failure.errorNumber) : failure.reason;
    return "could not " + verb + " '" + failure.path + "': " + reason;
}

foundation::Error errorOf(const FileFailure& failure, const std::string& verb) {
    foundation::Error error = foundation::Error::withDescription(
        foundation::cocoaErrorDomain, cocoaCode(failure.access, failure.errorNumber), descriptionOf(failure, verb));
    error.userInfo[posixErrorCodeKey] = foundation::Value(std::int64_t{failure.errorNumber});
    return error;
}

} // namespace platform
