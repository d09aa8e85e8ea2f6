#pragma once

#include "platform/Application.h"
#include "platform/EndDelay.h"
#include "platform/cocoa/Step.h"

#import <AppKit/AppKit.h>

#include <functional>
#include <optional>

// Hands the Escape key to a sheet's button for it. A button has one key equivalent at most, and the default button's is
// the Return key.
@interface TXApplication : NSApplication {
@private
    NSButton* escapeButton_;
}

// Borrowed: nil, or the button of the open sheet.
@property(nonatomic, assign) NSButton* escapeButton;

@end

@class TXApplicationMessages;

namespace platform {

// The running application. Main thread; the first of the program's objects that deals with windows.
class CocoaApplication : public Application {
public:
    // Makes the shared application object.
    CocoaApplication();
    ~CocoaApplication() override;
    CocoaApplication(const CocoaApplication&) = delete;
    CocoaApplication& operator=(const CocoaApplication&) = delete;

    // Runs the event loop. It does not return: when the program is to end, `end` is called, and must end it. The
    // delegate is borrowed for as long as that takes.
    void run(ApplicationDelegate& delegate, std::function<void()> end);

    void terminate() override;
    void replyToApplicationShouldTerminate(bool shouldTerminate) override;
    std::shared_ptr<void> delayEnd() override { return endDelay_.begin(); }

    // Waits until nothing delays the end of the process, as System::end has to.
    void awaitEnd() { endDelay_.end(); }

    // What the system tells the application, by its object for that.
    void didFinishLaunching();
    TerminateReply shouldTerminate();
    bool shouldTerminateAfterLastWindowClosed();
    void willTerminate();

private:
    void requestTermination();
    TerminateReply askDelegate();

    Retained<TXApplicationMessages> messages_;
    Retained<NSObject> activity_;
    ApplicationDelegate* delegate_ = nullptr;
    EndDelay endDelay_;
    std::function<void()> end_;
    // The delegate's answer was Later, and its reply is still to come.
    bool replyPending_ = false;
    // The delegate is answering; it may reply within its answer.
    bool asking_ = false;
    std::optional<bool> replyWithinAnswer_;
    bool launched_ = false;
    // A request that came before the launch was over.
    bool requestWaiting_ = false;
};

} // namespace platform
