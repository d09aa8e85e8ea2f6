#include "platform/posix/PosixRunLoop.h"

#include <algorithm>
#include <utility>

namespace platform {

void PosixRunLoop::post(std::function<void()> event) {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
    posted_.notify_one();
}

bool PosixRunLoop::runOnce(std::chrono::milliseconds limit) {
    // The clock cannot count the longest limits.
    const std::chrono::milliseconds wait = std::min<std::chrono::milliseconds>(limit, std::chrono::hours(24));
    std::function<void()> event;
    {
        std::unique_lock lock(mutex_);
        if (!posted_.wait_for(lock, wait, [this] { return !events_.empty(); }))
            return false;
        event = std::move(events_.front());
        events_.pop_front();
    }
    event();
    return true;
}

} // namespace platform
