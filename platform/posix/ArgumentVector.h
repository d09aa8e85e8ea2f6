#pragma once

#include "platform/Tasks.h"

#include <string>
#include <vector>

namespace platform {

// Texts as the system takes them for a new program. What it is made from must outlive it.
class ArgumentVector {
public:
    // The arguments of a task, the program's own path first.
    explicit ArgumentVector(const TaskDescription& task);

    // The texts alone.
    explicit ArgumentVector(const std::vector<std::string>& texts);

    // Null-terminated.
    char* const* get() const { return pointers_.data(); }

private:
    void append(const std::vector<std::string>& texts);

    std::vector<char*> pointers_;
};

// Whether the system can be told the task as it stands: an absolute path, and no text with a zero byte, which would
// reach the child cut short.
bool isExpressible(const TaskDescription& task);

} // namespace platform
