#pragma once

#include "platform/UserInterface.h"

#include <memory>

namespace platform {

// The interface for a process without a display: stages, progress and questions on the standard streams. Makes the Qt
// application object, which then stays until the process ends and has seen nothing of the command line. From here on,
// writing to a closed pipe is an ordinary error for the whole process. Main thread, once.
std::unique_ptr<MainInterface> makeConsoleInterface();

} // namespace platform
