#include "platform/cocoa/CocoaThreads.h"
#include "tests/cocoa/MainLoop.h"
#include "tests/contract/ThreadsContract.h"

namespace tests {

namespace {

class CocoaWorld {
public:
    platform::Threads& threads() { return threads_; }
    bool runUntil(const std::function<bool()>& condition) { return ::runUntil(condition); }

private:
    platform::CocoaThreads threads_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Cocoa, ThreadsContract, CocoaWorld);

} // namespace

} // namespace tests
