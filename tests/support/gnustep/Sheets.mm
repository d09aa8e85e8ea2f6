// Sheets of alerts, as panels with the alert's texts and buttons that leave the run loop alone. GNUstep's own run a
// loop of their own inside the call. What a sheet looks like, and that it blocks its window, cannot be seen here.

#include <Block.h>
#include <map>

@interface TXSheetStandIn : NSObject {
@public
    NSAlert* alert_;
    NSPanel* panel_;
    void (^handler_)(NSModalResponse);
}
- (void)choose:(id)button;
- (void)end:(NSModalResponse)code;
@end

namespace {

std::map<NSAlert*, TXSheetStandIn*> sheets;

NSTextField* label(NSString* text, CGFloat y) {
    NSTextField* field = [[[NSTextField alloc] initWithFrame:NSMakeRect(20, y, 360, 40)] autorelease];
    [field setEditable:NO];
    [field setStringValue:text];
    return field;
}

TXSheetStandIn* sheetOf(NSAlert* alert) {
    TXSheetStandIn*& sheet = sheets[alert];
    if (sheet != nil)
        return sheet;
    sheet = [[TXSheetStandIn alloc] init];
    sheet->alert_ = alert;
    sheet->panel_ = [[NSPanel alloc] initWithContentRect:NSMakeRect(100, 100, 400, 160)
                                               styleMask:NSWindowStyleMaskTitled
                                                 backing:NSBackingStoreBuffered
                                                   defer:NO];
    [sheet->panel_ setReleasedWhenClosed:NO];
    NSView* content = [sheet->panel_ contentView];
    [content addSubview:label([alert messageText], 110)];
    [content addSubview:label([alert informativeText], 60)];
    CGFloat x = 380;
    for (NSButton* button in [alert buttons]) {
        x -= 110;
        [button setFrame:NSMakeRect(x, 10, 100, 30)];
        [button setTarget:sheet];
        [button setAction:@selector(choose:)];
        [content addSubview:button];
    }
    return sheet;
}

} // namespace

@implementation TXSheetStandIn

- (void)choose:(id)button {
    [self end:NSAlertFirstButtonReturn + static_cast<NSModalResponse>([[alert_ buttons] indexOfObject:button])];
}

- (void)end:(NSModalResponse)code {
    if (handler_ == nullptr)
        return;
    [self retain];
    const auto handler = handler_;
    handler_ = nullptr;
    sheets.erase(alert_);
    handler(code);
    Block_release(handler);
    [panel_ orderOut:nil];
    [panel_ autorelease];
    [self autorelease];
    [self release];
}

@end

@implementation NSAlert (StandIn)

- (id)window {
    return sheetOf(self)->panel_;
}

- (void)beginSheetModalForWindow:(NSWindow*)window completionHandler:(void (^)(NSModalResponse))handler {
    (void)window;
    TXSheetStandIn* sheet = sheetOf(self);
    sheet->handler_ = Block_copy(handler);
    [sheet->panel_ makeKeyAndOrderFront:nil];
}

@end

@implementation NSWindow (StandIn)

- (void)setRestorable:(BOOL)restorable {
    (void)restorable;
}

- (void)setPreventsApplicationTerminationWhenModal:(BOOL)prevents {
    (void)prevents;
}

- (void)endSheet:(NSWindow*)sheet {
    for (const auto& [alert, standIn] : sheets) {
        if (standIn->panel_ == sheet) {
            [standIn end:NSRunStoppedResponse];
            return;
        }
    }
}

@end
