#pragma once

#include "platform/Application.h"
#include "platform/Platform.h"
#include "platform/UserInterface.h"

#include <memory>
#include <string>
#include <vector>

namespace platform {

// All that the program needs of the system it runs on. Made once, at the start, and never destroyed: threads can be at
// work until the very end. Main thread.
class System {
public:
    virtual ~System() = default;

    // Borrowed for as long as the process runs.
    virtual Platform services() = 0;
    virtual MainInterface& interface() = 0;

    // Shows the interface and runs the application's main loop; the exit status. The delegate is borrowed. A system
    // whose main loop never returns ends the process itself.
    virtual int run(ApplicationDelegate& delegate) = 0;

    // Removes what the run still has in the temporary folder and ends the process at once, whatever other threads are
    // doing, and without taking anything from under them.
    [[noreturn]] virtual void end(int status) = 0;
};

// The system that is built in. The arguments are the command line as it was before any library looked at it.
std::unique_ptr<System> makeSystem(const std::vector<std::string>& arguments);

} // namespace platform
