#pragma once

#include "platform/Threads.h"
#include "platform/cocoa/Step.h"

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace platform {

// Hand-over between threads on the main run loop, in its common modes: steps run while a sheet is open or a reply to a
// quit request is awaited, too. Made on the main thread.
class CocoaThreads : public Threads {
public:
    CocoaThreads();

    // A step is destroyed on the main thread, or with the last turn of the run loop that was asked for.
    void performOnMain(std::function<void()> step) override;

    bool performInBackground(std::function<void()> step) override;

    std::shared_ptr<RunLoop> makeRunLoop() override;

private:
    // One for all threads, so that steps run in the order in which they were added.
    class Queue {
    public:
        void add(std::function<void()> step);
        void runNext();

    private:
        std::mutex mutex_;
        std::deque<std::function<void()>> steps_;
    };

    std::shared_ptr<Queue> queue_ = std::make_shared<Queue>();
    // Runs the next step of the queue.
    Retained<TXStep> turn_;
};

} // namespace platform
