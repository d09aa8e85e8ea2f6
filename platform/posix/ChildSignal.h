#pragma once

#include <csignal>

namespace platform {

// Lets ended children be waited for, whatever was done about their signal before, and sets that back at the end of its
// life. For the whole process.
class DefaultChildSignal {
public:
    DefaultChildSignal();
    ~DefaultChildSignal();
    DefaultChildSignal(const DefaultChildSignal&) = delete;
    DefaultChildSignal& operator=(const DefaultChildSignal&) = delete;

private:
    struct sigaction previous_ {};
};

} // namespace platform
