#pragma once

#include "platform/posix/FileDescriptor.h"

#include <string_view>
#include <sys/types.h>

namespace platform {

// Waits for the end of one child on a thread of its own, which is the one way that every system has to do so without
// holding up whoever looks at other things as well.
class ChildWaiter {
public:
    // Makes the pipe that the end comes through. Made before the child is, so that this cannot fail any more then.
    ChildWaiter();

    // Whether there is a pipe.
    bool isOpen() const { return ending_.isOpen() && report_.isOpen(); }

    // Starts to wait for the child. The end of the pipe that can be read to its end once the child has ended; a child
    // that cannot be waited for is killed, and the result is not open.
    FileDescriptor start(pid_t child);

    // What was read: the exit status, or the number of the signal that ended the child; -1 when that is unknown.
    static int status(std::string_view bytes);

private:
    FileDescriptor ending_;
    FileDescriptor report_;
};

} // namespace platform
