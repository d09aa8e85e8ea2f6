#include "platform/cocoa/CocoaApplication.h"
#include "platform/cocoa/CocoaThreads.h"
#include "tests/contract/ApplicationContract.h"

namespace tests {

namespace {

class CocoaWorld {
public:
    platform::Application& application() { return application_; }
    void later(std::function<void()> step) { threads_.performOnMain(std::move(step)); }
    void run(platform::ApplicationDelegate& delegate, std::function<void()> end) {
        application_.run(delegate, std::move(end));
    }

private:
    platform::CocoaApplication application_;
    platform::CocoaThreads threads_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Cocoa, ApplicationContract, CocoaWorld);

} // namespace

} // namespace tests
