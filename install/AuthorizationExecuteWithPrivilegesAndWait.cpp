#include "install/AuthorizationExecuteWithPrivilegesAndWait.h"

#include "platform/Platform.h"

namespace {

// The exit status and the number of an ending signal; the core-dump bit does not matter.
constexpr unsigned failureBits = 0xff7f;

} // namespace

bool AuthorizationExecuteWithPrivilegesAndWait(platform::AuthorizationRef& authorization, const std::string& tool,
                                               const std::vector<std::string>& arguments) {
    platform::Authorization& system = *platform::current().authorization;
    // With the signal ignored the system would reap the tool itself, and its status would be lost.
    const auto defaultChildSignal = system.useDefaultChildSignal();
    if (!system.executeWithPrivileges(authorization, tool, arguments))
        return false;
    // Deliberate: whichever child ends first is taken for the tool.
    const auto status = system.wait();
    return status && (static_cast<unsigned>(*status) & failureBits) == 0;
}
