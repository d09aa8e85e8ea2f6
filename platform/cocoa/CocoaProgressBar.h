#pragma once

#include "platform/UserInterface.h"
#include "platform/cocoa/Retained.h"

#import <AppKit/AppKit.h>

#include <functional>
#include <optional>

namespace platform {

// The window's bar. Main thread.
class CocoaProgressBar : public ProgressIndicator {
public:
    explicit CocoaProgressBar(NSRect frame);

    NSProgressIndicator* view() const { return view_.get(); }

    // Called after each change with the shown share from 0 to 1; nothing while indeterminate.
    void setObserver(std::function<void(std::optional<double> share)> observer) { observer_ = std::move(observer); }

    void setIndeterminate(bool indeterminate) override;
    void setMinValue(double value) override;
    void setMaxValue(double value) override;
    void setDoubleValue(double value) override;
    void startAnimation() override;
    void stopAnimation() override;

private:
    void update();
    std::optional<double> share() const;

    Retained<NSProgressIndicator> view_;
    // Only an indeterminate bar starts and stops, so a determinate phase in between leaves this as it was.
    bool animating_ = false;
    std::function<void(std::optional<double> share)> observer_;
};

} // namespace platform
