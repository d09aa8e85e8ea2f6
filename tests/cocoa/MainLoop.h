#pragma once

#import <Foundation/Foundation.h>

#include <chrono>

// Turns the main run loop until the condition holds. False when it does not within the limit, which only a failing test
// waits for.
template <class Condition>
bool runUntil(Condition holds, std::chrono::seconds limit = std::chrono::seconds(30)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        @autoreleasepool {
            [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                     beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.05]];
        }
    }
    return true;
}
