#include "platform/cocoa/CocoaThreads.h"

#include "platform/posix/PosixRunLoop.h"

#include <system_error>
#include <thread>
#include <utility>

namespace platform {

CocoaThreads::CocoaThreads() : turn_([TXStep stepWithStep:[queue = queue_] { queue->runNext(); }]) {
    // The first thread that Foundation starts itself makes it guard its own data; threads of C++ do not.
    [NSThread detachNewThreadSelector:@selector(class) toTarget:[NSObject class] withObject:nil];
}

void CocoaThreads::performOnMain(std::function<void()> step) {
    @autoreleasepool {
        queue_->add(std::move(step));
        [turn_.get() performSelectorOnMainThread:@selector(perform) withObject:nil waitUntilDone:NO];
    }
}

bool CocoaThreads::performInBackground(std::function<void()> step) {
    try {
        std::thread([step = std::move(step)]() mutable {
            @autoreleasepool {
                std::exchange(step, nullptr)();
            }
        }).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

std::shared_ptr<RunLoop> CocoaThreads::makeRunLoop() {
    return std::make_shared<PosixRunLoop>();
}

void CocoaThreads::Queue::add(std::function<void()> step) {
    const std::lock_guard lock(mutex_);
    steps_.push_back(std::move(step));
}

void CocoaThreads::Queue::runNext() {
    std::function<void()> step;
    {
        const std::lock_guard lock(mutex_);
        step = std::move(steps_.front());
        steps_.pop_front();
    }
    step();
}

} // namespace platform
