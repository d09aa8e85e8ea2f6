#include "platform/posix/ArgumentVector.h"

#include <algorithm>

namespace platform {

ArgumentVector::ArgumentVector(const TaskDescription& task) {
    pointers_.push_back(const_cast<char*>(task.path.c_str()));
    append(task.arguments);
}

ArgumentVector::ArgumentVector(const std::vector<std::string>& texts) {
    append(texts);
}

// The system's type is not const for historical reasons; nothing writes through it.
void ArgumentVector::append(const std::vector<std::string>& texts) {
    for (const std::string& text : texts)
        pointers_.push_back(const_cast<char*>(text.c_str()));
    pointers_.push_back(nullptr);
}

bool isExpressible(const TaskDescription& task) {
    const auto isPlain = [](const std::string& text) { return text.find('\0') == std::string::npos; };
    return !task.path.empty() && task.path.front() == '/' && isPlain(task.path) &&
           isPlain(task.directory.value_or("")) && std::all_of(task.arguments.begin(), task.arguments.end(), isPlain);
}

} // namespace platform
