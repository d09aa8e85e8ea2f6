#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace platform {

// Holds up the end of the process for work that must not be left half done. Any thread; lives as long as the process.
class EndDelay {
public:
    // In force until the result is dropped. Once the process is ending, this does not return.
    std::shared_ptr<void> begin() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !ending_; });
        ++count_;
        return {nullptr, [this](void*) { release(); }};
    }

    // Waits until none is in force, but not for ever: whoever waits longer takes the program for one that hangs. From
    // then on none can begin.
    void end(std::chrono::milliseconds limit = std::chrono::minutes(1)) {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, limit, [this] { return count_ == 0; });
        ending_ = true;
    }

private:
    void release() {
        const std::lock_guard lock(mutex_);
        --count_;
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    int count_ = 0;
    bool ending_ = false;
};

} // namespace platform
