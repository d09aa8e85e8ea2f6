// Put in front of every Objective-C++ source where GNUstep takes the place of the system's frameworks: what is newer
// than GNUstep. The stand-ins in this folder show that the layer compiles and what it does; they cannot show how the
// real system looks, feels or decides.
#pragma once

#ifdef __OBJC__
#import <AppKit/AppKit.h>

#import "URLSession.h"

typedef NSInteger NSModalResponse;

static const NSEventType NSEventTypeKeyDown __attribute__((unused)) = NSKeyDown;
static const NSAlertStyle NSAlertStyleWarning __attribute__((unused)) = NSWarningAlertStyle;
static const NSAlertStyle NSAlertStyleCritical __attribute__((unused)) = NSCriticalAlertStyle;
static const NSProgressIndicatorStyle NSProgressIndicatorStyleBar __attribute__((unused)) = NSProgressIndicatorBarStyle;
static const NSCompositingOperation NSCompositingOperationSourceOver __attribute__((unused)) = NSCompositeSourceOver;

typedef struct {
    NSInteger majorVersion;
    NSInteger minorVersion;
    NSInteger patchVersion;
} NSOperatingSystemVersion;

@interface NSProcessInfo (StandIn)
- (NSOperatingSystemVersion)operatingSystemVersion;
@end

@interface NSApplication (StandIn)
- (NSUserInterfaceLayoutDirection)userInterfaceLayoutDirection;
// For tests.
+ (void)setStandInLayoutDirection:(NSUserInterfaceLayoutDirection)direction;
- (NSDockTile*)dockTile;
@end

@interface NSView (StandIn)
- (void)setAccessibilityLabel:(NSString*)label;
- (NSString*)accessibilityLabel;
@end

@interface NSWindow (StandIn)
- (void)setRestorable:(BOOL)restorable;
- (void)setPreventsApplicationTerminationWhenModal:(BOOL)prevents;
- (void)endSheet:(NSWindow*)sheet;
@end

@interface NSAlert (StandIn)
- (void)beginSheetModalForWindow:(NSWindow*)window completionHandler:(void (^)(NSModalResponse))handler;
@end

typedef const void* CFTypeRef;
typedef CFTypeRef CFPropertyListRef;
typedef const struct __CFString* CFStringRef;

#ifdef __cplusplus
extern "C" {
#endif
extern const CFStringRef kCFPreferencesCurrentUser;
extern const CFStringRef kCFPreferencesAnyHost;
CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef domain);
void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                           CFStringRef host);
unsigned char CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host);
#ifdef __cplusplus
}
#endif
#endif
