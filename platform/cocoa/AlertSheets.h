#pragma once

#include "platform/AlertQueue.h"
#include "platform/cocoa/Retained.h"

#import <AppKit/AppKit.h>

namespace platform {

// Alerts as sheets on the progress window. Main thread.
class AlertSheets : public AlertQueue {
public:
    // The window outlives this object.
    explicit AlertSheets(NSWindow* window) : window_(window) {}

private:
    void show(const Alert& alert) override;
    void allEnded(bool programEnds) override;

    // A sheet must not begin while another one ends, so it begins in a later step.
    void beginLater(Retained<NSAlert> alert, std::size_t escapeButton);
    void begin(NSAlert* alert, std::size_t escapeButton);
    void sheetEnded(int number, NSInteger returnCode);
    // Takes the open sheet away, if there is one; what it still says counts for nothing.
    void close();

    NSWindow* window_;
    // Of the newest sheet; others have ended.
    int number_ = 0;
    // Nothing before it has begun and after it has ended.
    Retained<NSAlert> open_;
};

} // namespace platform
