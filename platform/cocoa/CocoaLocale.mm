#include "platform/cocoa/CocoaLocale.h"

#include "platform/cocoa/CocoaText.h"

#import <Foundation/Foundation.h>

namespace platform {

std::optional<std::string> CocoaLocale::countryCode() {
    @autoreleasepool {
        std::string code = fromNSString([[NSLocale currentLocale] objectForKey:NSLocaleCountryCode]);
        return code.empty() ? std::nullopt : std::optional(std::move(code));
    }
}

std::vector<std::string> CocoaLocale::preferredLanguages() {
    @autoreleasepool {
        std::vector<std::string> languages;
        for (NSString* language in [NSLocale preferredLanguages])
            languages.push_back(fromNSString(language));
        if (languages.empty())
            languages.emplace_back("en");
        return languages;
    }
}

} // namespace platform
