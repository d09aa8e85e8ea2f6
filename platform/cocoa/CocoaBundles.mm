#include "platform/cocoa/CocoaBundles.h"

#include "foundation/PathString.h"
#include "platform/cocoa/CocoaText.h"
#include "platform/cocoa/CocoaValue.h"

#include <sys/stat.h>

namespace platform {
namespace {

using foundation::Value;

// The S_IFMT bits of what is at the path; 0 where nothing is.
mode_t typeAt(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & S_IFMT : 0;
}

} // namespace

CocoaBundles::CocoaBundles(const std::string& mainBundlePath)
    : main_(mainBundlePath.empty() ? [NSBundle mainBundle] : [NSBundle bundleWithPath:toNSString(mainBundlePath)]) {}

std::string CocoaBundles::mainBundlePath() {
    @autoreleasepool {
        return fromNSString([main_.get() bundlePath]);
    }
}

std::optional<Value> CocoaBundles::objectForInfoDictionaryKey(const std::string& key) {
    @autoreleasepool {
        return fromPropertyList([main_.get() objectForInfoDictionaryKey:toNSString(key)]);
    }
}

std::optional<Value::Dictionary> CocoaBundles::bundleInformation(const std::string& path) {
    if (typeAt(path) != S_IFDIR)
        return std::nullopt;
    @autoreleasepool {
        for (const char* place : {"Contents/Info.plist", "Resources/Info.plist", "Info.plist"}) {
            const std::string file = foundation::path::appendingPathComponent(path, place);
            // Opening anything else could wait for ever.
            if (typeAt(file) == S_IFREG)
                return fromDictionary([NSDictionary dictionaryWithContentsOfFile:toNSString(file)]);
        }
    }
    return Value::Dictionary();
}

std::string CocoaBundles::localizedString(const std::string& key, const std::string& value) {
    @autoreleasepool {
        return fromNSString([main_.get() localizedStringForKey:toNSString(key) value:toNSString(value) table:nil]);
    }
}

} // namespace platform
