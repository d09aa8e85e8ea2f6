#pragma once

#include "platform/Threads.h"

#include <condition_variable>
#include <deque>
#include <mutex>

namespace platform {

// An event queue that its owner sleeps on.
class PosixRunLoop : public RunLoop {
public:
    void post(std::function<void()> event) override;
    bool runOnce(std::chrono::milliseconds limit) override;

private:
    std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<std::function<void()>> events_;
};

} // namespace platform
