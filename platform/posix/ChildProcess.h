#pragma once

#include "platform/Tasks.h"

#include <sys/types.h>

namespace platform {

// Starts a child of the calling thread in a process group of its own, with the two descriptors as its standard input
// and output, this program's standard error, nothing else open, and default signals. Its number, or -1 when it could
// not be started. Each system has a source file of its own for it.
pid_t spawnChild(const TaskDescription& task, int standardInput, int standardOutput);

// Starts a program that is no child of this process, in a session of its own, with nothing open but streams that lead
// nowhere, in the task's folder or else "/". False when it could not be started.
bool spawnDetached(const TaskDescription& task);

} // namespace platform
