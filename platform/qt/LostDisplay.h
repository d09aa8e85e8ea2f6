#pragma once

#include <functional>

namespace platform {

// The connection to the display breaks while the program runs, because the person's session or its server ends.
class LostDisplay {
public:
    // Calls the handler in the middle of whatever the main thread does, and not always on that thread; it has to end
    // the process. Call it once.
    static void setHandler(std::function<void()> handler);
};

} // namespace platform
