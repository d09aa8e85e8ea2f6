#pragma once

#include "platform/Workspace.h"

#include <functional>
#include <string>
#include <vector>

namespace platform {

// A living process of this user and the files that may be the program it runs: its executable, and for an interpreter
// the script as well. Absolute paths.
struct UserProcess {
    RunningApplication identity;
    std::vector<std::string> programs;
};

// This user's processes. This process and those that have ended but are not waited for are left out. Any thread.
std::vector<UserProcess> processesOfThisUser();

// Whether the command line of any process, of whatever user, speaks of the path. Any thread.
bool isNamedByAProcess(const std::string& path);

// Whether the process is still the one of that start time, and has not ended.
bool isRunning(const RunningApplication& process);

} // namespace platform
