// The system's loader on libcurl: each task has a thread, and the delegate gets one message at a time. It shows that
// the delegate and the sinks are right. Proxies, trust, connection reuse, retries and time-outs of the real one cannot
// be seen here, and no challenge is ever sent.

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <curl/curl.h>
#include <mutex>
#include <string>
#include <thread>

using Clock = std::chrono::steady_clock;

// Announces a length, as GNUstep's own does not.
@interface TXResponse : NSHTTPURLResponse {
@public
    long long length_;
}
@end

@implementation TXResponse
- (long long)expectedContentLength {
    return length_;
}
@end

@implementation NSURLSessionConfiguration
@synthesize timeoutIntervalForRequest = timeout_;
@synthesize URLCache = cache_;
@synthesize HTTPCookieStorage = cookies_;
@synthesize HTTPShouldSetCookies = setsCookies_;
+ (NSURLSessionConfiguration*)ephemeralSessionConfiguration {
    return [[[self alloc] init] autorelease];
}
@end

struct SessionStandIn {
    id<NSURLSessionDataDelegate> delegate;
    double timeout;
    NSMutableArray* tasks = [[NSMutableArray alloc] init];
    // One message at a time.
    std::mutex turn;
    std::mutex lock;
};

struct TaskStandIn {
    NSURLSession* session;
    NSURLRequest* request;
    NSUInteger number;
    std::atomic<bool> cancelled = false;

    SessionStandIn& owner() const { return *session->state_; }
};

namespace {

// One request of a task and its answer.
struct Exchange {
    NSURLSessionDataTask* task;
    CURL* curl = curl_easy_init();
    NSMutableDictionary* headers = [NSMutableDictionary dictionary];
    long status = 0;
    bool redirects = false;
    bool responded = false;
    bool timedOut = false;
    curl_off_t seen = 0;
    Clock::time_point lastSeen = Clock::now();

    bool stopped() const { return task->state_->cancelled.load(); }
};

template <class Call>
void tell(NSURLSessionTask* task, Call call) {
    const std::lock_guard turn(task->state_->owner().turn);
    @autoreleasepool {
        call(task->state_->owner().delegate);
    }
}

void respond(Exchange& exchange) {
    exchange.responded = true;
    NSURLSessionDataTask* task = exchange.task;
    TXResponse* response = [[[TXResponse alloc] initWithURL:[task->state_->request URL]
                                                 statusCode:exchange.status
                                                HTTPVersion:@"HTTP/1.1"
                                               headerFields:exchange.headers] autorelease];
    NSString* length = [exchange.headers objectForKey:@"content-length"];
    response->length_ = length == nil ? -1 : [length longLongValue];
    __block NSURLSessionResponseDisposition disposition = NSURLSessionResponseCancel;
    {
        const std::lock_guard turn(task->state_->owner().turn);
        [task->state_->owner().delegate URLSession:task->state_->session
                                          dataTask:task
                                didReceiveResponse:response
                                 completionHandler:^(NSURLSessionResponseDisposition chosen) {
                                   disposition = chosen;
                                 }];
    }
    if (disposition != NSURLSessionResponseAllow)
        task->state_->cancelled = true;
}

std::size_t takeHeader(char* bytes, std::size_t size, std::size_t count, void* context) {
    auto& exchange = *static_cast<Exchange*>(context);
    const std::string line(bytes, size * count);
    if (line.rfind("HTTP/", 0) == 0)
        [exchange.headers removeAllObjects];
    if (const auto colon = line.find(':'); colon != std::string::npos) {
        NSString* name = [[NSString stringWithUTF8String:line.substr(0, colon).c_str()] lowercaseString];
        NSString* value = [NSString stringWithUTF8String:line.substr(colon + 1).c_str()];
        if (value != nil)
            [exchange.headers
                setObject:[value stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]]
                   forKey:name];
    }
    if (line == "\r\n" || line == "\n") {
        curl_easy_getinfo(exchange.curl, CURLINFO_RESPONSE_CODE, &exchange.status);
        exchange.redirects = exchange.status / 100 == 3 && [exchange.headers objectForKey:@"location"] != nil;
        if (exchange.status >= 200 && !exchange.redirects && !exchange.stopped())
            respond(exchange);
    }
    return exchange.stopped() ? 0 : line.size();
}

std::size_t takeBody(char* bytes, std::size_t size, std::size_t count, void* context) {
    auto& exchange = *static_cast<Exchange*>(context);
    if (!exchange.redirects && !exchange.stopped()) {
        tell(exchange.task, [&](id<NSURLSessionDataDelegate> delegate) {
            [delegate URLSession:exchange.task->state_->session
                        dataTask:exchange.task
                  didReceiveData:[NSData dataWithBytes:bytes length:size * count]];
        });
    }
    return exchange.stopped() ? 0 : size * count;
}

int watch(void* context, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent) {
    auto& exchange = *static_cast<Exchange*>(context);
    if (received + sent != exchange.seen) {
        exchange.seen = received + sent;
        exchange.lastSeen = Clock::now();
    }
    exchange.timedOut = std::chrono::duration<double>(Clock::now() - exchange.lastSeen).count() >
                        exchange.task->state_->owner().timeout;
    return exchange.timedOut || exchange.stopped() ? 1 : 0;
}

CURLcode perform(Exchange& exchange) {
    NSURLRequest* request = exchange.task->state_->request;
    CURL* curl = exchange.curl;
    curl_slist* lines = curl_slist_append(nullptr, "Expect:");
    NSDictionary* fields = [request allHTTPHeaderFields];
    for (NSString* name in fields)
        lines = curl_slist_append(lines,
                                  [[NSString stringWithFormat:@"%@: %@", name, [fields objectForKey:name]] UTF8String]);
    curl_easy_setopt(curl, CURLOPT_URL, [[[request URL] absoluteString] UTF8String]);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    if (const char* certificates = std::getenv("SSL_CERT_FILE"))
        curl_easy_setopt(curl, CURLOPT_CAINFO, certificates);
    if ([[request HTTPMethod] isEqualToString:@"GET"] && [request valueForHTTPHeaderField:@"Accept-Encoding"] == nil)
        curl_easy_setopt(curl, CURLOPT_ACCEPT_ENCODING, "gzip");
    NSData* body = [request HTTPBody];
    if ([[request HTTPMethod] isEqualToString:@"POST"]) {
        curl_easy_setopt(curl, CURLOPT_POST, 1L);
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>([body length]));
        curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body == nil ? "" : [body bytes]);
    }
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, lines);
    curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, takeHeader);
    curl_easy_setopt(curl, CURLOPT_HEADERDATA, &exchange);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, takeBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &exchange);
    curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, watch);
    curl_easy_setopt(curl, CURLOPT_XFERINFODATA, &exchange);
    const CURLcode result = curl_easy_perform(curl);
    curl_slist_free_all(lines);
    return result;
}

NSInteger errorCode(CURLcode result, const Exchange& exchange) {
    if (exchange.stopped())
        return NSURLErrorCancelled;
    if (exchange.timedOut)
        return NSURLErrorTimedOut;
    switch (result) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return NSURLErrorCannotFindHost;
    case CURLE_COULDNT_CONNECT:
        return NSURLErrorCannotConnectToHost;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CONNECT_ERROR:
        return NSURLErrorSecureConnectionFailed;
    case CURLE_URL_MALFORMAT:
        return NSURLErrorBadURL;
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
        return NSURLErrorUnknown;
    default:
        return NSURLErrorNetworkConnectionLost;
    }
}

// The next request after a redirect; nil when the delegate refuses it.
NSURLRequest* followed(Exchange& exchange) {
    NSURLSessionDataTask* task = exchange.task;
    const char* address = nullptr;
    curl_easy_getinfo(exchange.curl, CURLINFO_REDIRECT_URL, &address);
    NSURL* target = address == nullptr ? nil : [NSURL URLWithString:[NSString stringWithUTF8String:address]];
    NSMutableURLRequest* next = [[task->state_->request mutableCopy] autorelease];
    [next setURL:target];
    if (exchange.status <= 303) {
        [next setHTTPMethod:@"GET"];
        [next setHTTPBody:nil];
    }
    NSHTTPURLResponse* response = [[[NSHTTPURLResponse alloc] initWithURL:[task->state_->request URL]
                                                               statusCode:exchange.status
                                                              HTTPVersion:@"HTTP/1.1"
                                                             headerFields:exchange.headers] autorelease];
    __block NSURLRequest* chosen = nil;
    {
        const std::lock_guard turn(task->state_->owner().turn);
        [task->state_->owner().delegate URLSession:task->state_->session
                                              task:task
                        willPerformHTTPRedirection:response
                                        newRequest:next
                                 completionHandler:^(NSURLRequest* request) {
                                   chosen = [request retain];
                                 }];
    }
    return [chosen autorelease];
}

// The error that the task ends with, or nil.
NSError* run(NSURLSessionDataTask* task) {
    while (true) {
        Exchange exchange{task};
        const CURLcode result = perform(exchange);
        const bool failed = result != CURLE_OK || exchange.stopped();
        const NSInteger code = errorCode(result, exchange);
        NSURLRequest* next = !failed && exchange.redirects ? followed(exchange) : nil;
        curl_easy_cleanup(exchange.curl);
        if (failed || exchange.stopped())
            return [NSError errorWithDomain:NSURLErrorDomain code:failed ? code : NSURLErrorCancelled userInfo:nil];
        if (next == nil)
            return nil;
        [task->state_->request autorelease];
        task->state_->request = [next retain];
    }
}

} // namespace

@implementation NSURLSessionTask

- (NSUInteger)taskIdentifier {
    return state_->number;
}

- (NSURLRequest*)currentRequest {
    return state_->request;
}

- (void)cancel {
    state_->cancelled = true;
}

- (void)resume {
    NSURLSessionDataTask* task = [(NSURLSessionDataTask*)self retain];
    std::thread([task] {
        @autoreleasepool {
            NSError* error = run(task);
            SessionStandIn& session = task->state_->owner();
            tell(task, [&](id<NSURLSessionDataDelegate> delegate) {
                [delegate URLSession:task->state_->session task:task didCompleteWithError:error];
            });
            {
                const std::lock_guard lock(session.lock);
                [session.tasks removeObjectIdenticalTo:task];
            }
            [task release];
        }
    }).detach();
}

- (void)dealloc {
    [state_->request release];
    [state_->session release];
    delete state_;
    [super dealloc];
}

@end

@implementation NSURLSessionDataTask
@end

@implementation NSURLSession

+ (NSURLSession*)sessionWithConfiguration:(NSURLSessionConfiguration*)configuration
                                 delegate:(id<NSURLSessionDataDelegate>)delegate
                            delegateQueue:(NSOperationQueue*)queue {
    (void)queue;
    static const CURLcode initialized = curl_global_init(CURL_GLOBAL_DEFAULT);
    (void)initialized;
    NSURLSession* session = [[[self alloc] init] autorelease];
    session->state_ = new SessionStandIn;
    session->state_->delegate = [delegate retain];
    session->state_->timeout = [configuration timeoutIntervalForRequest];
    return session;
}

- (NSURLSessionDataTask*)dataTaskWithRequest:(NSURLRequest*)request {
    static std::atomic<NSUInteger> numbers = 0;
    NSURLSessionDataTask* task = [[[NSURLSessionDataTask alloc] init] autorelease];
    task->state_ = new TaskStandIn;
    task->state_->session = [self retain];
    task->state_->request = [request copy];
    task->state_->number = ++numbers;
    const std::lock_guard lock(state_->lock);
    [state_->tasks addObject:task];
    return task;
}

- (void)invalidateAndCancel {
    const std::lock_guard lock(state_->lock);
    for (NSURLSessionTask* task in state_->tasks)
        [task cancel];
}

- (void)dealloc {
    [state_->delegate release];
    [state_->tasks release];
    delete state_;
    [super dealloc];
}

@end
