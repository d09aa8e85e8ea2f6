// The preferences' three calls on dictionaries: what is changed, and what is stored. It shows how values are converted,
// which keys are used and that changes are stored. That they reach a disk or another program, and what another program
// stores meanwhile, cannot be seen here.

#include "tests/support/gnustep/Preferences.h"

const CFStringRef kCFPreferencesCurrentUser = (__bridge CFStringRef) @"user";
const CFStringRef kCFPreferencesAnyHost = (__bridge CFStringRef) @"host";

static NSMutableDictionary* stored() {
    static NSMutableDictionary* all = [[NSMutableDictionary alloc] init];
    return all;
}

// By the same places; null for what is to be removed.
static NSMutableDictionary* changes() {
    static NSMutableDictionary* all = [[NSMutableDictionary alloc] init];
    return all;
}

static NSString* place(CFStringRef key, CFStringRef domain) {
    return [NSString stringWithFormat:@"%@ %@", (__bridge NSString*)domain, (__bridge NSString*)key];
}

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef domain) {
    id value = [changes() objectForKey:place(key, domain)];
    if (value == nil)
        value = [stored() objectForKey:place(key, domain)];
    return value == [NSNull null] ? nullptr : (__bridge CFPropertyListRef)[value retain];
}

void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                           CFStringRef host) {
    if (user == kCFPreferencesCurrentUser && host == kCFPreferencesAnyHost)
        [changes() setObject:value == nullptr ? [NSNull null] : (__bridge id)value forKey:place(key, domain)];
}

unsigned char CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host) {
    if (user != kCFPreferencesCurrentUser || host != kCFPreferencesAnyHost)
        return 0;
    for (NSString* place in [changes() allKeys]) {
        if (![place hasPrefix:[(__bridge NSString*)domain stringByAppendingString:@" "]])
            continue;
        [stored() setObject:[changes() objectForKey:place] forKey:place];
        [changes() removeObjectForKey:place];
    }
    return 1;
}

void forgetUnstoredPreferences(void) {
    [changes() removeAllObjects];
}
