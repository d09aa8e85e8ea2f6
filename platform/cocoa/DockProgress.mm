#include "platform/cocoa/DockProgress.h"

#include <cmath>

// The icon with a bar across its foot.
@interface TXDockView : NSView {
@private
    CGFloat share_;
}
@property(nonatomic, assign) CGFloat share;
@end

@implementation TXDockView

@synthesize share = share_;

- (void)drawRect:(NSRect)dirtyRect {
    (void)dirtyRect;
    const NSRect bounds = [self bounds];
    [[NSApp applicationIconImage] drawInRect:bounds
                                    fromRect:NSZeroRect
                                   operation:NSCompositingOperationSourceOver
                                    fraction:1];
    const CGFloat height = bounds.size.height / 10;
    NSRect bar = NSInsetRect(bounds, bounds.size.width / 10, 0);
    bar.origin.y += height / 2;
    bar.size.height = height;
    [[NSColor colorWithCalibratedWhite:0 alpha:CGFloat(0.6)] set];
    [[NSBezierPath bezierPathWithRoundedRect:bar xRadius:height / 2 yRadius:height / 2] fill];
    NSRect done = NSInsetRect(bar, height / 6, height / 6);
    done.size.width *= share_;
    [[NSColor whiteColor] set];
    [[NSBezierPath bezierPathWithRoundedRect:done xRadius:height / 3 yRadius:height / 3] fill];
}

@end

namespace platform {

void DockProgress::setProgress(std::optional<double> share) {
    const std::optional<int> percent = share ? std::optional(static_cast<int>(std::floor(*share * 100))) : std::nullopt;
    if (percent == percent_)
        return;
    percent_ = percent;
    NSDockTile* tile = [NSApp dockTile];
    if (percent && !view_) {
        const NSSize size = [tile size];
        view_ =
            Retained<TXDockView>::adopt([[TXDockView alloc] initWithFrame:NSMakeRect(0, 0, size.width, size.height)]);
    }
    [view_.get() setShare:percent.value_or(0) / CGFloat(100)];
    [tile setContentView:percent ? view_.get() : nil];
    [tile display];
}

} // namespace platform
