#include "platform/cocoa/CocoaApplication.h"

#include <utility>

@interface TXApplicationMessages : NSObject <NSApplicationDelegate> {
@private
    platform::CocoaApplication* application_;
}
- (instancetype)initWithApplication:(platform::CocoaApplication&)application;
@end

@implementation TXApplicationMessages

- (instancetype)initWithApplication:(platform::CocoaApplication&)application {
    self = [super init];
    if (self != nil)
        application_ = &application;
    return self;
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    (void)notification;
    application_->didFinishLaunching();
}

- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication*)sender {
    (void)sender;
    switch (application_->shouldTerminate()) {
    case platform::TerminateReply::Cancel:
        return NSTerminateCancel;
    case platform::TerminateReply::Later:
        return NSTerminateLater;
    case platform::TerminateReply::Now:
        break;
    }
    return NSTerminateNow;
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)sender {
    (void)sender;
    return application_->shouldTerminateAfterLastWindowClosed();
}

- (void)applicationWillTerminate:(NSNotification*)notification {
    (void)notification;
    application_->willTerminate();
}

// Later systems ask; nothing of this program's windows is kept for its next run.
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)application {
    (void)application;
    return YES;
}

@end

namespace {

constexpr unichar escapeCharacter = 0x1B;

bool isEscape(NSEvent* event) {
    if ([event type] != NSEventTypeKeyDown)
        return false;
    NSString* characters = [event charactersIgnoringModifiers];
    return [characters length] == 1 && [characters characterAtIndex:0] == escapeCharacter;
}

} // namespace

@implementation TXApplication

@synthesize escapeButton = escapeButton_;

- (void)sendEvent:(NSEvent*)event {
    NSButton* button = [self escapeButton];
    if (button != nil && isEscape(event) && [event window] == [button window])
        [button performClick:self];
    else
        [super sendEvent:event];
}

@end

namespace platform {

CocoaApplication::CocoaApplication() {
    [TXApplication sharedApplication];
    messages_ = Retained<TXApplicationMessages>::adopt([[TXApplicationMessages alloc] initWithApplication:*this]);
    [NSApp setDelegate:messages_.get()];
}

CocoaApplication::~CocoaApplication() {
    [NSApp setDelegate:nil];
}

void CocoaApplication::run(ApplicationDelegate& delegate, std::function<void()> end) {
    delegate_ = &delegate;
    end_ = std::move(end);
    // Held for the whole run: no nap in the background, no idle sleep, no end without asking.
    id activity = [[NSProcessInfo processInfo] beginActivityWithOptions:NSActivityUserInitiated reason:@"Installing"];
    activity_ = Retained<NSObject>(activity);
    [NSApp run];
}

void CocoaApplication::terminate() {
    TXStep* step = [TXStep stepWithStep:[this] { requestTermination(); }];
    [step performSelectorOnMainThread:@selector(perform) withObject:nil waitUntilDone:NO];
}

void CocoaApplication::requestTermination() {
    if (!launched_)
        requestWaiting_ = true;
    else if (!replyPending_)
        [NSApp terminate:nil];
}

void CocoaApplication::replyToApplicationShouldTerminate(bool shouldTerminate) {
    if (asking_) {
        replyWithinAnswer_ = shouldTerminate;
        return;
    }
    if (std::exchange(replyPending_, false))
        [NSApp replyToApplicationShouldTerminate:shouldTerminate];
}

void CocoaApplication::didFinishLaunching() {
    launched_ = true;
    delegate_->applicationDidFinishLaunching();
    if (std::exchange(requestWaiting_, false))
        terminate();
}

// The system asks of its own accord when the person logs out, even while an answer is pending; one reply then answers
// all questions.
TerminateReply CocoaApplication::shouldTerminate() {
    if (replyPending_)
        return TerminateReply::Later;
    const TerminateReply answer = askDelegate();
    replyPending_ = answer == TerminateReply::Later;
    return answer;
}

TerminateReply CocoaApplication::askDelegate() {
    asking_ = true;
    replyWithinAnswer_.reset();
    const TerminateReply answer = delegate_->applicationShouldTerminate();
    asking_ = false;
    if (answer != TerminateReply::Later || !replyWithinAnswer_)
        return answer;
    return *replyWithinAnswer_ ? TerminateReply::Now : TerminateReply::Cancel;
}

bool CocoaApplication::shouldTerminateAfterLastWindowClosed() {
    return delegate_ != nullptr && delegate_->applicationShouldTerminateAfterLastWindowClosed();
}

void CocoaApplication::willTerminate() {
    if (end_)
        end_();
}

} // namespace platform
