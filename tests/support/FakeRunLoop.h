#pragma once

#include "platform/Threads.h"

#include <deque>
#include <stdexcept>

// A loop in which time passes only by being asked: an empty wait ends at once. A wait that nothing can ever end is
// counted and throws, so that a test fails where the program would hang.
class FakeRunLoop final : public platform::RunLoop {
public:
    explicit FakeRunLoop(int& endlessWaits) : endlessWaits_(endlessWaits) {}

    void post(std::function<void()> event) { events_.push_back(std::move(event)); }

    bool runOnce(std::chrono::milliseconds limit) override {
        if (events_.empty()) {
            waited_ += limit;
            if (waited_ > std::chrono::hours(1) && ++endlessWaits_ > 0)
                throw std::logic_error("nothing would ever end this wait");
            return false;
        }
        const auto event = std::move(events_.front());
        events_.pop_front();
        event();
        return true;
    }

private:
    std::deque<std::function<void()>> events_;
    std::chrono::milliseconds waited_{0};
    int& endlessWaits_;
};
