#pragma once

#include "platform/Tasks.h"

#include <optional>
#include <string>
#include <sys/types.h>
#include <unistd.h>
#include <vector>

namespace platform {

// What a child begins with besides its program, arguments and folder. It has nothing else open, and no signal is
// blocked.
struct ChildStart {
    // Open descriptors that become the standard streams; -1 leads nowhere.
    int standardInput = -1;
    int standardOutput = -1;
    int standardError = STDERR_FILENO;
    // All variables, as "NAME=value"; where absent, those of this process.
    std::optional<std::vector<std::string>> environment = std::nullopt;
    // Has a process group of its own and all signals as usual. Otherwise it belongs to the same job of the terminal as
    // this process, and what that job was told to ignore stays ignored.
    bool isOwnJob = true;
    // Is killed when the calling thread ends, where the system can do that.
    bool endsWithStarter = false;
};

// Starts a child of the calling thread. Its number, or -1 when it could not be started.
pid_t spawnChild(const TaskDescription& task, const ChildStart& start);

// Starts a program that is no child of this process, in a session of its own, with streams that lead nowhere, in the
// task's folder or else "/". False when it could not be started.
bool spawnDetached(const TaskDescription& task);

// Waits for the end of a child. Its status as the system gives it, or nothing when somebody else has taken that.
std::optional<int> waitForChild(pid_t child);

} // namespace platform
