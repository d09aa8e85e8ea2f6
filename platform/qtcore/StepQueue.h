#pragma once

#include <deque>
#include <functional>
#include <mutex>

namespace platform {

// Steps for one thread, in order, with a descriptor that is readable while any step waits. Any thread may add.
class StepQueue {
public:
    // Throws std::system_error when the system has no descriptor left.
    StepQueue();
    ~StepQueue();
    StepQueue(const StepQueue&) = delete;
    StepQueue& operator=(const StepQueue&) = delete;

    int descriptor() const { return descriptor_; }

    void add(std::function<void()> step);

    // Runs and destroys the first step, if there is one.
    void runNext();

private:
    std::mutex mutex_;
    std::deque<std::function<void()>> steps_;
    int descriptor_;
};

} // namespace platform
