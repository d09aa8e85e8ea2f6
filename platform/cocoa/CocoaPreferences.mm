#include "platform/cocoa/CocoaPreferences.h"

#include "platform/cocoa/CocoaText.h"
#include "platform/cocoa/CocoaValue.h"

#import <Foundation/Foundation.h>

namespace platform {
namespace {

CFStringRef toCFString(const std::string& text) {
    return (__bridge CFStringRef)toNSString(text);
}

} // namespace

std::optional<foundation::Value> CocoaPreferences::appValue(const std::string& key, const std::string& domain) {
    @autoreleasepool {
        id value = (__bridge id)CFPreferencesCopyAppValue(toCFString(key), toCFString(domain));
        return fromPropertyList([value autorelease]);
    }
}

void CocoaPreferences::setValue(const std::optional<foundation::Value>& value, const std::string& key,
                                const std::string& domain) {
    @autoreleasepool {
        id object = value ? toPropertyList(*value) : nil;
        CFPreferencesSetValue(toCFString(key), (__bridge CFPropertyListRef)object, toCFString(domain),
                              kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    }
}

void CocoaPreferences::synchronize(const std::string& domain) {
    @autoreleasepool {
        CFPreferencesSynchronize(toCFString(domain), kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    }
}

} // namespace platform
