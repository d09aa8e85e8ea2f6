#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// The right to run tools as administrator, for as long as it is held.
class AuthorizationRef {
public:
    virtual ~AuthorizationRef() = default;
};

// Administrator rights, and the child processes that they start.
class Authorization {
public:
    // Status values of create().
    static constexpr std::int32_t success = 0;
    static constexpr std::int32_t denied = -60005;
    static constexpr std::int32_t toolExecuteFailure = -60031;

    virtual ~Authorization() = default;

    // Makes an authorization without asking anybody. Any other status than success fills nothing.
    virtual std::int32_t create(std::shared_ptr<AuthorizationRef>& authorization) = 0;

    // Starts the tool as administrator, as a child of the calling thread, and returns without waiting for it. The
    // person may be asked for a password. The path is absolute; no shell is involved. False when it could not be
    // started.
    virtual bool executeWithPrivileges(AuthorizationRef& authorization, const std::string& tool,
                                       const std::vector<std::string>& arguments) = 0;

    // Waits for whichever child of the calling thread ends first. Its raw status, or nothing when there is none.
    virtual std::optional<int> wait() = 0;

    // Sets the child signal to its default action; dropping the result sets back what was there before.
    virtual std::shared_ptr<void> useDefaultChildSignal() = 0;
};

} // namespace platform
