#include "platform/cocoa/CocoaProcessInfo.h"

#include "foundation/PathString.h"
#include "platform/cocoa/CocoaText.h"

#import <Foundation/Foundation.h>

#include <utility>

namespace platform {

CocoaProcessInfo::CocoaProcessInfo(std::vector<std::string> arguments, std::string root)
    : arguments_(std::move(arguments)), root_(root == "/" ? std::string() : std::move(root)) {}

OperatingSystemVersion CocoaProcessInfo::operatingSystemVersion() {
    @autoreleasepool {
        const NSOperatingSystemVersion version = [[NSProcessInfo processInfo] operatingSystemVersion];
        return {version.majorVersion, version.minorVersion, version.patchVersion};
    }
}

std::string CocoaProcessInfo::globallyUniqueString() {
    @autoreleasepool {
        return fromNSString([[NSProcessInfo processInfo] globallyUniqueString]);
    }
}

std::optional<std::string> CocoaProcessInfo::makeUUID() {
    @autoreleasepool {
        return fromNSString([[NSUUID UUID] UUIDString]);
    }
}

std::string CocoaProcessInfo::temporaryDirectory() {
    @autoreleasepool {
        std::string folder = fromNSString(NSTemporaryDirectory());
        if (folder.empty() || folder.back() != '/')
            folder += '/';
        return folder;
    }
}

std::string CocoaProcessInfo::homeDirectory() {
    @autoreleasepool {
        return fromNSString(NSHomeDirectory());
    }
}

std::string CocoaProcessInfo::systemPath(const std::string& path) {
    return root_.empty() ? path : foundation::path::appendingPathComponent(root_, path);
}

double CocoaProcessInfo::secondsSinceReferenceDate() {
    return [NSDate timeIntervalSinceReferenceDate];
}

} // namespace platform
