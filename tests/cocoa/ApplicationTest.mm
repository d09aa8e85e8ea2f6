// The application, and hand-over between threads.

#include "platform/cocoa/CocoaApplication.h"
#include "platform/cocoa/CocoaThreads.h"
#include "tests/cocoa/MainLoop.h"
#include "tests/contract/ApplicationContract.h"
#include "tests/contract/ThreadsContract.h"

namespace tests {

namespace {

struct CocoaWorld {
    void later(std::function<void()> step) { threads.performOnMain(std::move(step)); }
    void run(platform::ApplicationDelegate& delegate, std::function<void()> end) {
        application.run(delegate, std::move(end));
    }
    static bool runUntil(const std::function<bool()>& condition) { return ::runUntil(condition); }

    platform::CocoaApplication application;
    platform::CocoaThreads threads;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Cocoa, ApplicationContract, CocoaWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Cocoa, ThreadsContract, CocoaWorld);

} // namespace

} // namespace tests
