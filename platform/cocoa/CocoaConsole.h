#pragma once

#include "platform/ProcessInfo.h"

namespace platform {

// The system's log, which shows on a terminal as well.
class CocoaConsole : public Console {
public:
    // Control bytes other than line ends and tabs are shown as escapes. An empty message writes nothing.
    void log(const std::string& message) override;
};

} // namespace platform
