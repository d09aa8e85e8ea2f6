#include "platform/cocoa/SessionLoader.h"

#include "platform/Transfers.h"
#include "platform/cocoa/CocoaText.h"

#include <system_error>
#include <thread>
#include <utility>

namespace platform {

namespace {

using transfers::RequestKind;

NSURLSession* makeSession(const transfers::TransferLimits& limits, std::shared_ptr<SessionTasks> tasks) {
    NSURLSessionConfiguration* configuration = [NSURLSessionConfiguration ephemeralSessionConfiguration];
    [configuration setTimeoutIntervalForRequest:std::chrono::duration<double>(limits.idleTimeout).count()];
    [configuration setURLCache:nil];
    [configuration setHTTPCookieStorage:nil];
    [configuration setHTTPShouldSetCookies:NO];
    // One message at a time.
    NSOperationQueue* queue = [[[NSOperationQueue alloc] init] autorelease];
    [queue setMaxConcurrentOperationCount:1];
    TXSessionDelegate* delegate = [[[TXSessionDelegate alloc] initWithTasks:std::move(tasks)] autorelease];
    return [NSURLSession sessionWithConfiguration:configuration delegate:delegate delegateQueue:queue];
}

// Nil when the system takes the address for none.
NSURLRequest* makeRequest(const transfers::WebRequest& request) {
    NSURL* url = [NSURL URLWithString:toNSString(request.url.absoluteString())];
    if (url == nil)
        return nil;
    NSMutableURLRequest* made = [NSMutableURLRequest requestWithURL:url];
    // A packed body has another length than the one that is announced.
    if (request.kind == RequestKind::Download)
        [made setValue:@"identity" forHTTPHeaderField:@"Accept-Encoding"];
    if (request.kind == RequestKind::Post) {
        [made setHTTPMethod:@"POST"];
        [made setValue:toNSString(request.headerValue) forHTTPHeaderField:toNSString(request.headerName)];
        [made setHTTPBody:[NSData dataWithBytes:request.body.data() length:request.body.size()]];
    }
    return made;
}

} // namespace

SessionLoader::SessionLoader(const transfers::TransferLimits& limits)
    : tasks_(std::make_shared<SessionTasks>(limits)) {
    @autoreleasepool {
        session_ = Retained<NSURLSession>(makeSession(limits, tasks_));
    }
}

SessionLoader::~SessionLoader() {
    @autoreleasepool {
        tasks_->clear();
        // The session keeps its delegate until then.
        [session_.get() invalidateAndCancel];
    }
}

void SessionLoader::load(transfers::WebRequest request, std::unique_ptr<transfers::Sink> sink) {
    @autoreleasepool {
        NSURLRequest* made = makeRequest(request);
        if (made == nil) {
            sink->end(transfers::TransferFailure{URLErrorCode::badURL, "The address is not valid.", {}},
                      request.url.absoluteString());
            return;
        }
        NSURLSessionDataTask* task = [session_.get() dataTaskWithRequest:made];
        tasks_->add([task taskIdentifier], request.kind, std::move(sink));
        [task resume];
    }
}

void SessionLoader::copy(std::unique_ptr<transfers::FileCopy> copy) {
    const std::shared_ptr<transfers::FileCopy> shared = std::move(copy);
    const auto run = [shared] {
        shared->begin();
        while (shared->copyPiece()) {
        }
    };
    try {
        std::thread(run).detach();
    } catch (const std::system_error&) {
        // Late and felt, but not lost.
        run();
    }
}

} // namespace platform
