#include "platform/cocoa/StageLabel.h"

#include "platform/cocoa/CocoaText.h"

namespace platform {

StageLabel::StageLabel(NSRect frame, NSFont* font)
    : view_(Retained<NSTextField>::adopt([[NSTextField alloc] initWithFrame:frame])) {
    NSTextField* field = view_.get();
    [field setEditable:NO];
    [field setSelectable:NO];
    [field setBezeled:NO];
    [field setDrawsBackground:NO];
    [field setFont:font];
    // Follows the direction in which the language is written.
    [field setAlignment:NSTextAlignmentNatural];
    [[field cell] setWraps:YES];
    [[field cell] setLineBreakMode:NSLineBreakByWordWrapping];
}

void StageLabel::setStringValue(const std::string& text) {
    NSString* shown = toNSString(text);
    if ([shown isEqualToString:[view_.get() stringValue]])
        return;
    [view_.get() setStringValue:shown];
    if (observer_)
        observer_(shown);
}

} // namespace platform
