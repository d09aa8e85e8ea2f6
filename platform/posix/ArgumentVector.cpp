#include "platform/posix/ArgumentVector.h"

#include <algorithm>

namespace platform {

ArgumentVector::ArgumentVector(const TaskDescription& task) {
    pointers_.reserve(task.arguments.size() + 2);
    // The system's type is not const for historical reasons; nothing writes through it.
    pointers_.push_back(const_cast<char*>(task.path.c_str()));
    for (const std::string& argument : task.arguments)
        pointers_.push_back(const_cast<char*>(argument.c_str()));
    pointers_.push_back(nullptr);
}

bool isExpressible(const TaskDescription& task) {
    const auto isPlain = [](const std::string& text) { return text.find('\0') == std::string::npos; };
    return !task.path.empty() && task.path.front() == '/' && isPlain(task.path) &&
           isPlain(task.directory.value_or("")) && std::all_of(task.arguments.begin(), task.arguments.end(), isPlain);
}

} // namespace platform
