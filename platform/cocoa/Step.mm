#include "platform/cocoa/Step.h"

#include <utility>

namespace {

void performNoexcept(const std::function<void()>& step) noexcept {
    step();
}

} // namespace

@implementation TXStep

+ (instancetype)stepWithStep:(std::function<void()>)step {
    TXStep* object = [[[self alloc] init] autorelease];
    object->step_ = new std::function<void()>(std::move(step));
    return object;
}

- (void)dealloc {
    delete step_;
    [super dealloc];
}

- (void)perform {
    @autoreleasepool {
        performNoexcept(*step_);
    }
}

- (void)perform:(id)sender {
    (void)sender;
    [self perform];
}

@end
