#include "platform/cocoa/CocoaProgressBar.h"

#include <algorithm>

namespace platform {

CocoaProgressBar::CocoaProgressBar(NSRect frame)
    : view_(Retained<NSProgressIndicator>::adopt([[NSProgressIndicator alloc] initWithFrame:frame])) {
    [view_.get() setStyle:NSProgressIndicatorStyleBar];
    [view_.get() setDisplayedWhenStopped:YES];
    [view_.get() setIndeterminate:YES];
}

void CocoaProgressBar::setIndeterminate(bool indeterminate) {
    [view_.get() setIndeterminate:indeterminate];
    update();
}

void CocoaProgressBar::setMinValue(double value) {
    [view_.get() setMinValue:value];
    update();
}

void CocoaProgressBar::setMaxValue(double value) {
    [view_.get() setMaxValue:value];
    update();
}

void CocoaProgressBar::setDoubleValue(double value) {
    [view_.get() setDoubleValue:value];
    update();
}

void CocoaProgressBar::startAnimation() {
    animating_ = animating_ || [view_.get() isIndeterminate];
    update();
}

void CocoaProgressBar::stopAnimation() {
    animating_ = animating_ && ![view_.get() isIndeterminate];
    update();
}

void CocoaProgressBar::update() {
    if (animating_ && [view_.get() isIndeterminate])
        [view_.get() startAnimation:nil];
    else
        [view_.get() stopAnimation:nil];
    if (observer_)
        observer_(share());
}

std::optional<double> CocoaProgressBar::share() const {
    if ([view_.get() isIndeterminate])
        return std::nullopt;
    const double range = [view_.get() maxValue] - [view_.get() minValue];
    const double done = [view_.get() doubleValue] - [view_.get() minValue];
    return range > 0 ? std::clamp(done / range, 0.0, 1.0) : 0.0;
}

} // namespace platform
