#pragma once

#include "platform/Authorization.h"

#include <string>
#include <vector>

// Runs one tool as administrator and waits for it; whether it ran and ended with exit status 0. Blocks. While it runs,
// the calling thread may have no other child process.
bool AuthorizationExecuteWithPrivilegesAndWait(platform::AuthorizationRef& authorization, const std::string& tool,
                                               const std::vector<std::string>& arguments);
