#include "platform/cocoa/SessionDelegate.h"

#include "foundation/URL.h"
#include "platform/Transfers.h"
#include "platform/cocoa/CocoaText.h"
#include "platform/transfers/SourceURL.h"

#include <string_view>
#include <utility>

namespace platform {

void SessionTasks::add(NSUInteger task, transfers::RequestKind kind, std::unique_ptr<transfers::Sink> sink) {
    const auto entry = std::make_shared<Entry>();
    entry->kind = kind;
    entry->sink = std::move(sink);
    const std::lock_guard lock(mutex_);
    entries_[task] = entry;
}

std::shared_ptr<SessionTasks::Entry> SessionTasks::find(NSUInteger task) {
    const std::lock_guard lock(mutex_);
    const auto found = entries_.find(task);
    return found == entries_.end() ? nullptr : found->second;
}

std::shared_ptr<SessionTasks::Entry> SessionTasks::take(NSUInteger task) {
    const std::lock_guard lock(mutex_);
    auto node = entries_.extract(task);
    return node.empty() ? nullptr : std::move(node.mapped());
}

void SessionTasks::clear() {
    std::map<NSUInteger, std::shared_ptr<Entry>> entries;
    const std::lock_guard lock(mutex_);
    entries.swap(entries_);
}

namespace {

using transfers::TransferFailure;

std::string textOf(NSURL* url) {
    return fromNSString([url absoluteString]);
}

// The HTTP status, or 0.
long statusOf(NSURLResponse* response) {
    return [response isKindOfClass:[NSHTTPURLResponse class]]
               ? static_cast<long>([static_cast<NSHTTPURLResponse*>(response) statusCode])
               : 0;
}

void stop(SessionTasks::Entry& entry, const TransferFailure& failure) {
    entry.stopped = true;
    entry.failure = failure;
}

// Counts the header lines of an answer or a redirect, and stops the task when they are too many. The system has read
// them by then, and tells nobody of those behind a body.
void takeHeaders(SessionTasks::Entry& entry, std::size_t limit, NSURLResponse* response) {
    NSDictionary* fields = [response isKindOfClass:[NSHTTPURLResponse class]]
                               ? [static_cast<NSHTTPURLResponse*>(response) allHeaderFields]
                               : nil;
    const std::size_t separators = 4;
    for (NSString* name in fields)
        entry.headerBytes += fromNSString(name).size() + fromNSString([fields objectForKey:name]).size() + separators;
    if (entry.headerBytes <= limit)
        return;
    if (entry.kind != transfers::RequestKind::Post)
        return stop(entry, transfers::lengthFailure());
    // Nobody reads the answer to a post.
    entry.sink->respond(statusOf(response), [response expectedContentLength]);
    entry.stopped = true;
}

// Where the answer redirects to, as the server put it.
std::string locationIn(NSHTTPURLResponse* response) {
    NSDictionary* fields = [response allHeaderFields];
    for (NSString* name in fields)
        if ([name caseInsensitiveCompare:@"location"] == NSOrderedSame)
            return fromNSString([fields objectForKey:name]);
    return {};
}

// Stops the task where the redirect may not be followed.
void checkRedirect(SessionTasks::Entry& entry, long limit, NSHTTPURLResponse* response, NSURL* to) {
    NSURL* from = [response URL];
    const auto target = foundation::URL::withString(textOf(to));
    if (!target || (transfers::isSecure(textOf(from)) && !transfers::isSecure(textOf(to))))
        stop(entry, transfers::redirectFailure());
    else if (const auto hostless = transfers::redirectTargetFailure(locationIn(response)))
        stop(entry, *hostless);
    else if (const auto failure = transfers::webURLFailure(*target))
        stop(entry, *failure);
    else if (++entry.redirects > limit)
        stop(entry, transfers::redirectCountFailure());
}

// Why the task ended; nothing when its answer is complete or its sink wanted no more of it.
std::optional<TransferFailure> failureOf(const SessionTasks::Entry& entry, NSError* error) {
    if (entry.stopped)
        return entry.failure;
    if (error == nil)
        return std::nullopt;
    const bool isOfLoading = [[error domain] isEqualToString:NSURLErrorDomain];
    return TransferFailure{isOfLoading ? std::int64_t{[error code]} : URLErrorCode::unknown,
                           fromNSString([error localizedDescription]),
                           fromNSString([error domain]) + " " + std::to_string([error code])};
}

} // namespace

} // namespace platform

using platform::SessionTasks;

@implementation TXSessionDelegate

- (instancetype)initWithTasks:(std::shared_ptr<SessionTasks>)tasks {
    self = [super init];
    if (self != nil)
        tasks_ = new std::shared_ptr<SessionTasks>(std::move(tasks));
    return self;
}

- (void)dealloc {
    delete tasks_;
    [super dealloc];
}

- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest*))completionHandler {
    (void)session;
    const auto entry = (*tasks_)->find([task taskIdentifier]);
    if (entry && !entry->stopped)
        platform::takeHeaders(*entry, (*tasks_)->limits().headerBytes, response);
    if (entry && !entry->stopped)
        platform::checkRedirect(*entry, (*tasks_)->limits().redirects, response, [request URL]);
    const bool goesOn = entry && !entry->stopped;
    if (!goesOn)
        [task cancel];
    completionHandler(goesOn ? request : nil);
}

- (void)URLSession:(NSURLSession*)session
              dataTask:(NSURLSessionDataTask*)task
    didReceiveResponse:(NSURLResponse*)response
     completionHandler:(void (^)(NSURLSessionResponseDisposition))completionHandler {
    (void)session;
    const auto entry = (*tasks_)->find([task taskIdentifier]);
    if (entry && !entry->stopped)
        platform::takeHeaders(*entry, (*tasks_)->limits().headerBytes, response);
    if (entry && !entry->stopped)
        entry->stopped = !entry->sink->respond(platform::statusOf(response), [response expectedContentLength]);
    completionHandler(entry && !entry->stopped ? NSURLSessionResponseAllow : NSURLSessionResponseCancel);
}

- (void)URLSession:(NSURLSession*)session dataTask:(NSURLSessionDataTask*)task didReceiveData:(NSData*)data {
    (void)session;
    const auto entry = (*tasks_)->find([task taskIdentifier]);
    // What was on its way already when the task was stopped.
    if (!entry || entry->stopped)
        return;
    entry->stopped = !entry->sink->receive(std::string_view(static_cast<const char*>([data bytes]), [data length]));
    if (entry->stopped)
        [task cancel];
}

// The system decides on certificates. Nobody is asked for a password: the refusal is the answer then.
- (void)URLSession:(NSURLSession*)session
                   task:(NSURLSessionTask*)task
    didReceiveChallenge:(NSURLAuthenticationChallenge*)challenge
      completionHandler:(void (^)(NSURLSessionAuthChallengeDisposition, NSURLCredential*))completionHandler {
    (void)session;
    (void)task;
    NSString* method = [[challenge protectionSpace] authenticationMethod];
    const bool isAboutTrust = [method isEqualToString:NSURLAuthenticationMethodServerTrust];
    completionHandler(isAboutTrust ? NSURLSessionAuthChallengePerformDefaultHandling
                                   : NSURLSessionAuthChallengeRejectProtectionSpace,
                      nil);
}

- (void)URLSession:(NSURLSession*)session task:(NSURLSessionTask*)task didCompleteWithError:(NSError*)error {
    (void)session;
    if (const auto entry = (*tasks_)->take([task taskIdentifier]))
        entry->sink->end(platform::failureOf(*entry, error), platform::textOf([[task currentRequest] URL]));
}

@end
