// The preferences' three calls on a dictionary. It shows how values are converted and which keys are used; that they
// reach a disk or another program cannot be seen here.

#import <Foundation/Foundation.h>

const CFStringRef kCFPreferencesCurrentUser = (__bridge CFStringRef) @"user";
const CFStringRef kCFPreferencesAnyHost = (__bridge CFStringRef) @"host";

static NSMutableDictionary* values() {
    static NSMutableDictionary* all = [[NSMutableDictionary alloc] init];
    return all;
}

static NSString* place(CFStringRef key, CFStringRef domain) {
    return [NSString stringWithFormat:@"%@ %@", (__bridge NSString*)domain, (__bridge NSString*)key];
}

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef domain) {
    return (__bridge CFPropertyListRef)[[values() objectForKey:place(key, domain)] retain];
}

void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                           CFStringRef host) {
    if (user != kCFPreferencesCurrentUser || host != kCFPreferencesAnyHost)
        return;
    if (value == nullptr)
        [values() removeObjectForKey:place(key, domain)];
    else
        [values() setObject:(__bridge id)value forKey:place(key, domain)];
}

unsigned char CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host) {
    (void)domain;
    return user == kCFPreferencesCurrentUser && host == kCFPreferencesAnyHost;
}
