#pragma once

#include "platform/posix/ChildProcess.h"
#include "platform/posix/PosixRunLoop.h"

#include <functional>

namespace platform {

// Starts a child of the calling thread, whose end is an event of the loop: its exit status, or the number of the signal
// that ended it; -1 when that is unknown. False when it could not be started. A thread of its own waits for the child,
// which is the one way that every system has to do so without holding up whoever looks at other things as well.
bool startWatchedChild(const TaskDescription& task, const ChildStart& start, PosixRunLoop& loop,
                       std::function<void(int status)> didEnd);

} // namespace platform
