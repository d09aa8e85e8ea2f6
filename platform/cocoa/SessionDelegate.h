#pragma once

#include "platform/cocoa/Retained.h"
#include "platform/transfers/Loader.h"
#include "platform/transfers/Sink.h"
#include "platform/transfers/TransferLimits.h"

#import <Foundation/Foundation.h>

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>

namespace platform {

// The tasks of one session and where their answers go. Sinks are added on any thread and used on the session's queue.
class SessionTasks {
public:
    // A running task. Used on the session's queue only.
    struct Entry {
        transfers::RequestKind kind = transfers::RequestKind::Fetch;
        std::unique_ptr<transfers::Sink> sink;
        long redirects = 0;
        std::size_t headerBytes = 0;
        // Why this program stopped the task; nothing where its sink did.
        std::optional<transfers::TransferFailure> failure;
        bool stopped = false;
    };

    explicit SessionTasks(const transfers::TransferLimits& limits) : limits_(limits) {}

    void add(NSUInteger task, transfers::RequestKind kind, std::unique_ptr<transfers::Sink> sink);
    // The entry stays until it is taken. Null when there is none any more.
    std::shared_ptr<Entry> find(NSUInteger task);
    std::shared_ptr<Entry> take(NSUInteger task);
    // Gives up all that there are.
    void clear();

    const transfers::TransferLimits& limits() const { return limits_; }

private:
    const transfers::TransferLimits limits_;
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
