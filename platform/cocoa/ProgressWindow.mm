#include "platform/cocoa/ProgressWindow.h"

#include "platform/cocoa/CocoaText.h"

#include <utility>

@interface TXWindowMessages : NSObject <NSWindowDelegate> {
@private
    std::function<void()>* close_;
}
- (instancetype)initWithCloseAction:(std::function<void()>)close;
@end

@implementation TXWindowMessages

- (instancetype)initWithCloseAction:(std::function<void()>)close {
    self = [super init];
    if (self != nil)
        close_ = new std::function<void()>(std::move(close));
    return self;
}

- (void)dealloc {
    delete close_;
    [super dealloc];
}

- (BOOL)windowShouldClose:(id)sender {
    (void)sender;
    (*close_)();
    return NO;
}

@end

namespace platform {

namespace {

// All in points; the origin is the lower left corner.
constexpr CGFloat width = 440;
constexpr CGFloat height = 120;
constexpr CGFloat margin = 20;
constexpr CGFloat iconSize = 64;
constexpr CGFloat textStart = margin + iconSize + margin;
constexpr CGFloat textWidth = width - textStart - margin;

// The frame as it is where languages are read from left to right, mirrored where they are not.
NSRect placed(CGFloat x, CGFloat y, CGFloat itemWidth, CGFloat itemHeight) {
    const bool mirrored = [NSApp userInterfaceLayoutDirection] == NSUserInterfaceLayoutDirectionRightToLeft;
    return NSMakeRect(mirrored ? width - x - itemWidth : x, y, itemWidth, itemHeight);
}

NSWindow* makeWindow() {
    constexpr NSUInteger style = NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable;
    NSWindow* window = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, width, height)
                                                   styleMask:style
                                                     backing:NSBackingStoreBuffered
                                                       defer:YES];
    [window setReleasedWhenClosed:NO];
    [window setRestorable:NO];
    return window;
}

NSView* makeIcon() {
    NSImageView* icon =
        [[NSImageView alloc] initWithFrame:placed(margin, height - margin - iconSize, iconSize, iconSize)];
    [icon setImage:[NSApp applicationIconImage]];
    return [icon autorelease];
}

} // namespace

ProgressWindow::ProgressWindow()
    : window_(Retained<NSWindow>::adopt(makeWindow())),
      title_(placed(textStart, height - margin - 20, textWidth, 20), [NSFont boldSystemFontOfSize:14]),
      text_(placed(textStart, margin + 24, textWidth, 34), [NSFont systemFontOfSize:[NSFont systemFontSize]]),
      bar_(placed(textStart, margin, textWidth, 20)) {
    for (NSView* view : {makeIcon(), static_cast<NSView*>(title_.view()), static_cast<NSView*>(text_.view()),
                         static_cast<NSView*>(bar_.view())})
        [[window_.get() contentView] addSubview:view];
    text_.setObserver([this](NSString* text) { describeStage(text); });
}

ProgressWindow::~ProgressWindow() {
    [window_.get() setDelegate:nil];
    [window_.get() close];
}

void ProgressWindow::setCloseAction(std::function<void()> close) {
    auto* messages = [[TXWindowMessages alloc] initWithCloseAction:std::move(close)];
    [window_.get() setDelegate:messages];
    messages_ = Retained<TXWindowMessages>::adopt(messages);
}

void ProgressWindow::setTitle(const std::string& title) {
    [window_.get() setTitle:toNSString(title)];
    title_.setStringValue(title);
}

void ProgressWindow::showCentred() {
    [window_.get() center];
    [window_.get() makeKeyAndOrderFront:nil];
    [NSApp activateIgnoringOtherApps:YES];
}

// The bar shows how far the stage is that the text names.
void ProgressWindow::describeStage(NSString* text) {
    [bar_.view() setAccessibilityLabel:text];
    NSDictionary* announcement =
        [NSDictionary dictionaryWithObjectsAndKeys:text, NSAccessibilityAnnouncementKey,
                                                   [NSNumber numberWithInteger:NSAccessibilityPriorityMedium],
                                                   NSAccessibilityPriorityKey, nil];
    NSAccessibilityPostNotificationWithUserInfo(window_.get(), NSAccessibilityAnnouncementRequestedNotification,
                                                announcement);
}

} // namespace platform
