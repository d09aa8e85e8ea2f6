#pragma once

#include "platform/cocoa/Retained.h"
#include "platform/transfers/Sink.h"

#import <Foundation/Foundation.h>

#include <map>
#include <memory>
#include <mutex>

namespace platform {

// The tasks of one session and where their answers go. Sinks are added on any thread and used on the session's queue.
class SessionTasks {
public:
    // A running task. Used on the session's queue only.
    struct Entry {
        std::unique_ptr<transfers::Sink> sink;
        long redirects = 0;
        // Why this program stopped the task; nothing where its sink did.
        std::optional<transfers::TransferFailure> failure;
        bool stopped = false;
    };

    explicit SessionTasks(long redirectLimit) : redirectLimit_(redirectLimit) {}

    void add(NSUInteger task, std::unique_ptr<transfers::Sink> sink);
    // The entry stays until it is taken. Null when there is none any more.
    std::shared_ptr<Entry> find(NSUInteger task);
    std::shared_ptr<Entry> take(NSUInteger task);
    // Gives up all that there are.
    void clear();

    long redirectLimit() const { return redirectLimit_; }

private:
    const long redirectLimit_;
    std::mutex mutex_;
    std::map<NSUInteger, std::shared_ptr<Entry>> entries_;
};

} // namespace platform

// Hands what a session tells of its tasks to their sinks, on the session's queue.
@interface TXSessionDelegate : NSObject <NSURLSessionDataDelegate> {
@private
    std::shared_ptr<platform::SessionTasks>* tasks_;
}

- (instancetype)initWithTasks:(std::shared_ptr<platform::SessionTasks>)tasks;

@end
