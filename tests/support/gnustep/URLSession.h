// The part of the system's loader that the program uses. Debian's GNUstep is built without one.
#pragma once

#import <Foundation/Foundation.h>

typedef NSInteger NSURLSessionAuthChallengeDisposition;
enum { NSURLSessionAuthChallengePerformDefaultHandling = 1, NSURLSessionAuthChallengeRejectProtectionSpace = 3 };
typedef NSInteger NSURLSessionResponseDisposition;
enum { NSURLSessionResponseCancel = 0, NSURLSessionResponseAllow = 1 };

@class NSURLSession;
@class NSURLCredential;
@class NSURLAuthenticationChallenge;

struct SessionStandIn;
struct TaskStandIn;

@interface NSURLSessionTask : NSObject {
@public
    struct TaskStandIn* state_;
}
@property(readonly) NSUInteger taskIdentifier;
@property(readonly, copy) NSURLRequest* currentRequest;
- (void)resume;
- (void)cancel;
@end

@interface NSURLSessionDataTask : NSURLSessionTask
@end

@protocol NSURLSessionDataDelegate <NSObject>
- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest*))completionHandler;
- (void)URLSession:(NSURLSession*)session
              dataTask:(NSURLSessionDataTask*)task
    didReceiveResponse:(NSURLResponse*)response
     completionHandler:(void (^)(NSURLSessionResponseDisposition))completionHandler;
- (void)URLSession:(NSURLSession*)session dataTask:(NSURLSessionDataTask*)task didReceiveData:(NSData*)data;
- (void)URLSession:(NSURLSession*)session
                   task:(NSURLSessionTask*)task
    didReceiveChallenge:(NSURLAuthenticationChallenge*)challenge
      completionHandler:(void (^)(NSURLSessionAuthChallengeDisposition, NSURLCredential*))completionHandler;
- (void)URLSession:(NSURLSession*)session task:(NSURLSessionTask*)task didCompleteWithError:(NSError*)error;
@end

@interface NSURLSessionConfiguration : NSObject {
@private
    NSTimeInterval timeout_;
    id cache_;
    id cookies_;
    BOOL setsCookies_;
}
+ (NSURLSessionConfiguration*)ephemeralSessionConfiguration;
@property NSTimeInterval timeoutIntervalForRequest;
@property(retain) id URLCache;
@property(retain) id HTTPCookieStorage;
@property BOOL HTTPShouldSetCookies;
@end

@interface NSURLSession : NSObject {
@public
    struct SessionStandIn* state_;
}
+ (NSURLSession*)sessionWithConfiguration:(NSURLSessionConfiguration*)configuration
                                 delegate:(id<NSURLSessionDataDelegate>)delegate
                            delegateQueue:(NSOperationQueue*)queue;
- (NSURLSessionDataTask*)dataTaskWithRequest:(NSURLRequest*)request;
- (void)invalidateAndCancel;
@end
