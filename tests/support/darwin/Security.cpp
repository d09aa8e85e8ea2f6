#include "tests/support/darwin/Security.h"

#include "tests/support/darwin/Security/Authorization.h"

#include <spawn.h>
#include <unistd.h>

namespace {

const char reference = 0;

} // namespace

OSStatus AuthorizationCreate(const AuthorizationRights* /*rights*/, const AuthorizationEnvironment* /*environment*/,
                             AuthorizationFlags /*flags*/, AuthorizationRef* authorization) {
    SecurityStandIn& service = SecurityStandIn::shared();
    if (service.createStatus == errAuthorizationSuccess) {
        ++service.references;
        *authorization = reinterpret_cast<AuthorizationRef>(&reference);
    }
    return service.createStatus;
}

OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags /*flags*/) {
    if (authorization == reinterpret_cast<AuthorizationRef>(&reference))
        --SecurityStandIn::shared().references;
    return errAuthorizationSuccess;
}

extern "C" OSStatus AuthorizationExecuteWithPrivileges(AuthorizationRef /*authorization*/, const char* tool,
                                                       AuthorizationFlags /*flags*/, char* const* arguments,
                                                       FILE** /*pipe*/) {
    SecurityStandIn& service = SecurityStandIn::shared();
    std::vector<char*> words{const_cast<char*>(tool)};
    std::vector<std::string> command{tool};
    for (; *arguments != nullptr; ++arguments) {
        words.push_back(*arguments);
        command.emplace_back(*arguments);
    }
    words.push_back(nullptr);
    service.commands.push_back(command);
    if (service.executeStatus != errAuthorizationSuccess)
        return service.executeStatus;
    pid_t child = 0;
    return ::posix_spawn(&child, tool, nullptr, nullptr, words.data(), environ) == 0 ? errAuthorizationSuccess : -60031;
}
