#pragma once

#include <cerrno>
#include <stdexcept>
#include <string>

namespace hdiutil {

// Why a command could not be carried out, as one line for the user.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A failed system call: what was tried, and the text of the error number (errno unless one is given).
Failure systemFailure(const std::string& attempt, int error = errno);

// Why the exception that is being handled was thrown: a Failure, a FileFailure, or another of the library's own.
std::string currentReason();

} // namespace hdiutil
