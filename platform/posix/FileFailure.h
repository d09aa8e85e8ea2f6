#pragma once

#include "foundation/Error.h"

#include <cstdint>
#include <string>

namespace platform {

// The user-information key of the system's own error number.
inline constexpr const char* posixErrorCodeKey = "POSIXErrorCode";

// Whether a step was reading or writing; the same system error has another code for each.
enum class FileAccess : std::uint8_t { Reading, Writing };

// A file operation that failed. The services turn it into an error value.
struct FileFailure {
    FileAccess access = FileAccess::Writing;
    std::string path;
    int errorNumber = 0;
    // Says more than the system's text for the number, or is empty.
    std::string reason;
};

// Throws a failure with the current errno.
[[noreturn]] void throwErrno(FileAccess access, const std::string& path);

// One line for people: "could not <verb> '<path>': <system text>".
std::string descriptionOf(const FileFailure& failure, const std::string& verb);

// The error with that text.
foundation::Error errorOf(const FileFailure& failure, const std::string& verb);

} // namespace platform
