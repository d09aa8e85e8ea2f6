#pragma once

#include <functional>
#include <string>

namespace platform {

// Keeps two installers of one user from working on one applications folder at the same time. Main thread.
class SingleInstance {
public:
    virtual ~SingleInstance() = default;

    // Claims the folder until this process ends, however it ends. False when another process of this user has claimed
    // it, which is then told. `activated` is called, later and each time, when another process has come second. A
    // system that can keep no claim says true: it must not hold anybody up.
    virtual bool claim(const std::string& folder, std::function<void()> activated) = 0;
};

} // namespace platform
