#pragma once

#include "platform/Authorization.h"
#include "platform/posix/PathsInUse.h"

#include <memory>
#include <string>
#include <vector>

namespace platform {

// Administrator rights through pkexec or sudo, or those of the administrator himself. Any thread; a thread waits for
// its own children only.
class LinuxAuthorization : public Authorization {
public:
    // Finds out what will run the tools. toolExecuteFailure when nothing can.
    std::int32_t create(std::shared_ptr<AuthorizationRef>& authorization) override;

    // The tool runs in the folder "/", with a fixed environment, and shares nothing but standard error with this
    // process.
    bool executeWithPrivileges(AuthorizationRef& authorization, const std::string& tool,
                               const std::vector<std::string>& arguments) override;

    std::optional<int> wait() override;
    std::shared_ptr<void> useDefaultChildSignal() override;

    // The absolute paths that tools were given by an authorization that is still held: one of them may be running. Any
    // thread.
    std::vector<std::string> pathsInUse() const;

private:
    const std::shared_ptr<PathsInUse> paths_ = std::make_shared<PathsInUse>();
};

} // namespace platform
