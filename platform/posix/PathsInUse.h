#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace platform {

// The paths that running tools work on, so that nobody removes anything from under them. Any thread.
class PathsInUse {
public:
    // Notes those of the arguments that are absolute paths.
    void add(const void* owner, const std::vector<std::string>& arguments) {
        const std::lock_guard lock(mutex_);
        for (const std::string& argument : arguments)
            if (!argument.empty() && argument.front() == '/')
                paths_.emplace_back(owner, argument);
    }

    // Forgets all of the owner's.
    void release(const void* owner) {
        const std::lock_guard lock(mutex_);
        std::erase_if(paths_, [owner](const auto& entry) { return entry.first == owner; });
    }

    std::vector<std::string> all() const {
        const std::lock_guard lock(mutex_);
        std::vector<std::string> paths;
        for (const auto& [owner, path] : paths_)
            paths.push_back(path);
        return paths;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::pair<const void*, std::string>> paths_;
};

} // namespace platform
