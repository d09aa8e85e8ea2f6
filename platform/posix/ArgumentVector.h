#pragma once

#include "platform/Tasks.h"

#include <string>
#include <vector>

namespace platform {

// The argument vector of a task, the program's own path first. The task must outlive it.
class ArgumentVector {
public:
    explicit ArgumentVector(const TaskDescription& task);

    // Null-terminated, as the system takes it.
    char* const* get() const { return pointers_.data(); }

private:
    std::vector<char*> pointers_;
};

// Whether the system can be told the task as it stands: an absolute path, and no text with a zero byte, which would
// reach the child cut short.
bool isExpressible(const TaskDescription& task);

} // namespace platform
