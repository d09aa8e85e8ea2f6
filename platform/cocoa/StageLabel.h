#pragma once

#include "platform/UserInterface.h"
#include "platform/cocoa/Retained.h"

#import <AppKit/AppKit.h>

#include <functional>

namespace platform {

// A text that people read and cannot change. Main thread.
class StageLabel : public Label {
public:
    StageLabel(NSRect frame, NSFont* font);

    NSTextField* view() const { return view_.get(); }

    // Called with each text that differs from the one before.
    void setObserver(std::function<void(NSString* text)> observer) { observer_ = std::move(observer); }

    void setStringValue(const std::string& text) override;

private:
    Retained<NSTextField> view_;
    std::function<void(NSString* text)> observer_;
};

} // namespace platform
