#pragma once

#include "platform/Authorization.h"

namespace platform {

// Administrator rights from the system's authorization service, which asks the person when the first tool is to run.
// Any thread, one at a time: the system cannot tell one thread's children from another's.
class MacAuthorization : public Authorization {
public:
    std::int32_t create(std::shared_ptr<AuthorizationRef>& authorization) override;

    // Blocks until the person has answered. False as well where the system no longer has the call.
    bool executeWithPrivileges(AuthorizationRef& authorization, const std::string& tool,
                               const std::vector<std::string>& arguments) override;

    std::optional<int> wait() override;
    std::shared_ptr<void> useDefaultChildSignal() override;
};

} // namespace platform
