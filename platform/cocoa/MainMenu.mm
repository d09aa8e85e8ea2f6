#include "platform/cocoa/MainMenu.h"

#include "platform/cocoa/CocoaText.h"
#include "platform/cocoa/Step.h"

#import <AppKit/AppKit.h>

#include <utility>

namespace platform {

namespace {

NSMenuItem* addItem(NSMenu* menu, NSString* title, SEL action, NSString* key) {
    NSMenuItem* item = [[[NSMenuItem alloc] initWithTitle:title action:action keyEquivalent:key] autorelease];
    [menu addItem:item];
    return item;
}

// A menu in the bar; the bar shows the program's name as the first one's title.
NSMenu* addMenu(NSMenu* bar, NSString* title) {
    NSMenuItem* place = addItem(bar, title, NULL, @"");
    NSMenu* menu = [[[NSMenu alloc] initWithTitle:title] autorelease];
    [bar setSubmenu:menu forItem:place];
    return menu;
}

NSString* text(Bundles& bundles, const char* key) {
    return toNSString(bundles.localizedString(key, ""));
}

// The menu item holds no reference to its target, so the step is its represented object as well.
void addStep(NSMenu* menu, NSString* title, NSString* key, std::function<void()> perform) {
    NSMenuItem* item = addItem(menu, title, @selector(perform:), key);
    TXStep* step = [TXStep stepWithStep:std::move(perform)];
    [item setTarget:step];
    [item setRepresentedObject:step];
}

} // namespace

void installMainMenu(Bundles& bundles, std::function<void()> quit, std::function<void()> showHelp) {
    NSMenu* bar = [[[NSMenu alloc] initWithTitle:@""] autorelease];
    NSMenu* program = addMenu(bar, @"");
    addItem(program, text(bundles, "MAC_LAUNCHER_MENU_HIDE"), @selector(hide:), @"h");
    [program addItem:[NSMenuItem separatorItem]];
    // Asks the delegate in a step of its own, unlike the application's own action.
    addStep(program, text(bundles, "MAC_LAUNCHER_INCOMPLETE_WARNING_QUIT"), @"q", std::move(quit));
    NSString* minimize = text(bundles, "MAC_LAUNCHER_MENU_MINIMIZE");
    NSMenu* windows = addMenu(bar, minimize);
    addItem(windows, minimize, @selector(performMiniaturize:), @"m");
    NSString* help = text(bundles, "MAC_LAUNCHER_MENU_HELP");
    addStep(addMenu(bar, help), help, @"?", std::move(showHelp));
    [NSApp setMainMenu:bar];
}

} // namespace platform
