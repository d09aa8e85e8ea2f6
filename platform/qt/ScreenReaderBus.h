#pragma once

#include <chrono>

namespace platform {

// The message bus of screen readers.
class ScreenReaderBus {
public:
    // Where it accepts connections and then never answers, Qt waits for it without end. Finds out within twice the
    // time, and keeps Qt away from such a bus, as well as the programs that this one starts. False then. Main thread,
    // before the Qt application object is made and before other threads run; after SessionBus::isUsable.
    static bool isUsable(std::chrono::milliseconds patience);
};

} // namespace platform
