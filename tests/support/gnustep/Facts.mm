// Answers that GNUstep has no method for. The version is made up; the Dock, restoring and log-out do not exist here.

#include <map>

@implementation NSProcessInfo (StandIn)

- (NSOperatingSystemVersion)operatingSystemVersion {
    return {10, 13, 6};
}

@end

@implementation NSApplication (StandIn)

static NSUserInterfaceLayoutDirection layoutDirection = NSUserInterfaceLayoutDirectionLeftToRight;

- (NSUserInterfaceLayoutDirection)userInterfaceLayoutDirection {
    return layoutDirection;
}

+ (void)setStandInLayoutDirection:(NSUserInterfaceLayoutDirection)direction {
    layoutDirection = direction;
}

- (NSDockTile*)dockTile {
    static NSDockTile* tile = [[NSDockTile alloc] init];
    return tile;
}

@end

@implementation NSView (StandIn)

static std::map<const void*, NSString*> labels;

- (void)setAccessibilityLabel:(NSString*)label {
    NSString*& kept = labels[self];
    [kept release];
    kept = [label copy];
}

- (NSString*)accessibilityLabel {
    const auto found = labels.find(self);
    return found == labels.end() ? nil : found->second;
}

@end
