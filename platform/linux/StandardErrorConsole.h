#pragma once

#include "platform/ProcessInfo.h"

namespace platform {

// The console as lines on standard error, each message with the local time, the program and the thread in front.
class StandardErrorConsole : public Console {
public:
    // The path or name that the program was started with.
    explicit StandardErrorConsole(const std::string& program);

    // Control bytes other than line ends and tabs are shown as escapes. An empty message prints nothing.
    void log(const std::string& message) override;

private:
    const std::string name_;
};

} // namespace platform
