#pragma once

#include "platform/UserInterface.h"
#include "platform/cocoa/CocoaProgressBar.h"
#include "platform/cocoa/Retained.h"
#include "platform/cocoa/StageLabel.h"

#import <AppKit/AppKit.h>

#include <functional>
#include <string>

@class TXWindowMessages;

namespace platform {

// The progress window: icon, title, the stage's text and a bar. It never closes itself: whoever owns it ends the
// program. Main thread; after the application object.
class ProgressWindow : public Window {
public:
    ProgressWindow();
    ~ProgressWindow() override;
    ProgressWindow(const ProgressWindow&) = delete;
    ProgressWindow& operator=(const ProgressWindow&) = delete;

    NSWindow* window() const { return window_.get(); }
    StageLabel& textIndicator() { return text_; }
    CocoaProgressBar& progressIndicator() { return bar_; }

    // Called when the person wants the window closed.
    void setCloseAction(std::function<void()> close);

    void setTitle(const std::string& title) override;

    // Shows the window in the middle of its screen, in front of others.
    void showCentred();

private:
    // What screen readers learn of a new stage.
    void describeStage(NSString* text);

    Retained<NSWindow> window_;
    Retained<TXWindowMessages> messages_;
    StageLabel title_;
    StageLabel text_;
    CocoaProgressBar bar_;
};

} // namespace platform
