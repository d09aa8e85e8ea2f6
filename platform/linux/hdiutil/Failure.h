#pragma once

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>

namespace hdiutil {

// Why a command could not be carried out, as one line for the user.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A failed system call: what was tried, and the text of the error number (errno unless one is given).
inline Failure systemFailure(const std::string& attempt, int error = errno) {
    return Failure{attempt + ": " + std::generic_category().message(error)};
}

} // namespace hdiutil
