#pragma once

#include "platform/cocoa/Retained.h"

#include <functional>

// A closure as an object: what a button, a menu item or the main run loop performs. The closure must not throw; the
// program ends where it does, as nothing of C++ may be thrown through the system's frames.
@interface TXStep : NSObject {
@private
    std::function<void()>* step_;
}

+ (instancetype)stepWithStep:(std::function<void()>)step;

- (void)perform;

// The same as an action, for the target of a control.
- (void)perform:(id)sender;

@end
