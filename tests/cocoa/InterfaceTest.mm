#include "tests/cocoa/InterfaceTest.h"

#include "platform/cocoa/CocoaText.h"

using platform::fromNSString;
using platform::toNSString;

namespace screen {

namespace {

template <class Visit>
void visitViews(NSView* view, Visit visit) {
    visit(view);
    for (NSView* child in [view subviews])
        visitViews(child, visit);
}

template <class Visit>
void visitVisible(NSWindow* besides, Visit visit) {
    for (NSWindow* window in [NSApp windows]) {
        if ([window isVisible] && window != besides)
            visitViews([window contentView], visit);
    }
}

} // namespace

NSButton* button(const std::string& title) {
    NSButton* found = nil;
    visitVisible(nil, [&](NSView* view) {
        if ([view isKindOfClass:[NSButton class]] && [[(NSButton*)view title] isEqualToString:toNSString(title)])
            found = (NSButton*)view;
    });
    return found;
}

std::vector<std::string> texts(NSWindow* besides) {
    std::vector<std::string> all;
    visitVisible(besides, [&](NSView* view) {
        if ([view isKindOfClass:[NSButton class]])
            all.push_back(fromNSString([(NSButton*)view title]));
        else if ([view isKindOfClass:[NSTextField class]])
            all.push_back(fromNSString([(NSTextField*)view stringValue]));
    });
    return all;
}

void pressEscape(NSWindow* window) {
    [NSApp sendEvent:[NSEvent keyEventWithType:NSEventTypeKeyDown
                                            location:NSZeroPoint
                                       modifierFlags:0
                                           timestamp:0
                                        windowNumber:[window windowNumber]
                                             context:nil
                                          characters:@"\033"
                         charactersIgnoringModifiers:@"\033"
                                           isARepeat:NO
                                             keyCode:53]];
}

} // namespace screen

TEST_F(InterfaceTest, ShowsTitleAndStage) {
    interface.window().setTitle("Sample Installer");
    interface.textIndicator().setStringValue("Downloading…");
    EXPECT_EQ(fromNSString([interface.window().window() title]), "Sample Installer");
    EXPECT_TRUE([interface.window().window() isVisible]);
    const auto shown = screen::texts(nil);
    EXPECT_EQ(std::count(shown.begin(), shown.end(), "Sample Installer"), 1);
    EXPECT_EQ(std::count(shown.begin(), shown.end(), "Downloading…"), 1);
}

#ifdef GNUSTEP
TEST(ProgressWindowTest, IsMirroredForLanguagesFromRightToLeft) {
    const auto placesOf = [](NSUserInterfaceLayoutDirection direction) {
        [NSApplication setStandInLayoutDirection:direction];
        platform::ProgressWindow window;
        return std::pair(NSMinX([window.progressIndicator().view() frame]),
                         NSMinX([window.textIndicator().view() frame]));
    };
    const auto [bar, text] = placesOf(NSUserInterfaceLayoutDirectionLeftToRight);
    const auto [mirroredBar, mirroredText] = placesOf(NSUserInterfaceLayoutDirectionRightToLeft);
    [NSApplication setStandInLayoutDirection:NSUserInterfaceLayoutDirectionLeftToRight];
    EXPECT_EQ(bar, text);
    EXPECT_EQ(mirroredBar, mirroredText);
    EXPECT_GT(bar, mirroredBar);
}
#endif

TEST_F(InterfaceTest, NamesTheBarAfterTheStage) {
    NSView* bar = interface.window().progressIndicator().view();
    interface.textIndicator().setStringValue("Installing…");
    EXPECT_EQ(fromNSString([bar accessibilityLabel]), "Installing…");
}

TEST_F(InterfaceTest, AsksToQuitInsteadOfClosing) {
    [interface.window().window() performClose:nil];
    EXPECT_EQ(application.quits, 1);
    EXPECT_TRUE([interface.window().window() isVisible]);
}

TEST_F(InterfaceTest, OffersCommandsInItsMenus) {
    const auto perform = [](const char* title) {
        for (NSMenuItem* place in [[NSApp mainMenu] itemArray]) {
            NSMenu* menu = [place submenu];
            const NSInteger index = [menu indexOfItemWithTitle:toNSString(title)];
            if (index >= 0) {
                [menu performActionForItemAtIndex:index];
                return fromNSString([(NSMenuItem*)[menu itemAtIndex:index] keyEquivalent]);
            }
        }
        return std::string("missing");
    };
    EXPECT_EQ(perform("Quit"), "q");
    EXPECT_EQ(application.quits, 1);
    EXPECT_EQ(perform("Tolvix Help"), "?");
    EXPECT_EQ(application.helps, 1);
    NSMenu* program = [[[[NSApp mainMenu] itemArray] objectAtIndex:0] submenu];
    EXPECT_EQ(fromNSString([[[program itemArray] objectAtIndex:0] title]), "Hide Tolvix Installer");
    NSMenu* windows = [[[[NSApp mainMenu] itemArray] objectAtIndex:1] submenu];
    EXPECT_EQ(fromNSString([[[windows itemArray] objectAtIndex:0] title]), "Minimize");
}

TEST(CocoaProgressBarTest, TellsItsShareWhileDeterminate) {
    platform::CocoaProgressBar bar(NSMakeRect(0, 0, 100, 20));
    std::optional<double> share = -1;
    bar.setObserver([&](std::optional<double> shown) { share = shown; });
    bar.startAnimation();
    EXPECT_EQ(share, std::nullopt);
    bar.setIndeterminate(false);
    bar.setMinValue(0);
    bar.setMaxValue(50);
    struct Row {
        double value;
        double share;
    };
    for (const Row row : {Row{25, 0.5}, Row{50, 1}, Row{80, 1}, Row{-3, 0}}) {
        bar.setDoubleValue(row.value);
        EXPECT_EQ(share, row.share) << row.value;
    }
    bar.setIndeterminate(true);
    EXPECT_EQ(share, std::nullopt);
}

TEST(DockProgressTest, ShowsAndHidesTheBar) {
    platform::DockProgress dock;
    dock.setProgress(0.5);
    EXPECT_TRUE([[NSApp dockTile] contentView] != nil);
    dock.setProgress(std::nullopt);
    EXPECT_TRUE([[NSApp dockTile] contentView] == nil);
}
