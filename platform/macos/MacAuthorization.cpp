#include "platform/macos/MacAuthorization.h"

#include "platform/posix/ArgumentVector.h"
#include "platform/posix/ChildSignal.h"

#include <Security/Authorization.h>
#include <cerrno>
#include <cstdio>
#include <dlfcn.h>
#include <sys/wait.h>

namespace platform {

namespace {

// Gives the rights back when it goes.
class MacAuthorizationRef : public AuthorizationRef {
public:
    explicit MacAuthorizationRef(::AuthorizationRef ref) : ref_(ref) {}
    ~MacAuthorizationRef() override { ::AuthorizationFree(ref_, kAuthorizationFlagDefaults); }
    MacAuthorizationRef(const MacAuthorizationRef&) = delete;
    MacAuthorizationRef& operator=(const MacAuthorizationRef&) = delete;

    ::AuthorizationRef get() const { return ref_; }

private:
    const ::AuthorizationRef ref_;
};

using ExecuteWithPrivileges = OSStatus (*)(::AuthorizationRef, const char*, AuthorizationFlags, char* const*, FILE**);

// Looked up, because the system may go without it one day.
ExecuteWithPrivileges findExecuteWithPrivileges() {
    return reinterpret_cast<ExecuteWithPrivileges>(::dlsym(RTLD_DEFAULT, "AuthorizationExecuteWithPrivileges"));
}

} // namespace

std::int32_t MacAuthorization::create(std::shared_ptr<AuthorizationRef>& authorization) {
    ::AuthorizationRef ref = nullptr;
    const OSStatus status =
        ::AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &ref);
    if (status == errAuthorizationSuccess)
        authorization = std::make_shared<MacAuthorizationRef>(ref);
    return status;
}

bool MacAuthorization::executeWithPrivileges(AuthorizationRef& authorization, const std::string& tool,
                                             const std::vector<std::string>& arguments) {
    const auto* own = dynamic_cast<const MacAuthorizationRef*>(&authorization);
    const TaskDescription command{tool, arguments, std::nullopt, nullptr, nullptr};
    const ExecuteWithPrivileges execute = findExecuteWithPrivileges();
    if (own == nullptr || execute == nullptr || !isExpressible(command))
        return false;
    const ArgumentVector words(command);
    // The first word is the tool's own path, which the call takes on its own.
    return execute(own->get(), tool.c_str(), kAuthorizationFlagDefaults, words.get() + 1, nullptr) ==
           errAuthorizationSuccess;
}

std::optional<int> MacAuthorization::wait() {
    int status = 0;
    while (::wait(&status) < 0)
        if (errno != EINTR)
            return std::nullopt;
    return status;
}

std::shared_ptr<void> MacAuthorization::useDefaultChildSignal() {
    return std::make_shared<DefaultChildSignal>();
}

} // namespace platform
