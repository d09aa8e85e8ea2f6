#include "platform/cocoa/CocoaWorkspace.h"

#include "platform/cocoa/CocoaText.h"
#include "platform/posix/DestroyFiles.h"

#import <AppKit/AppKit.h>

#include <chrono>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

constexpr std::chrono::milliseconds quitWait(50);

// What tells a process from a later one with its number: when it started, in milliseconds. 0 where the system does not
// know, as for programs that it did not launch itself.
std::uint64_t startTimeOf(NSRunningApplication* application) {
    NSDate* launched = [application launchDate];
    return launched == nil ? 0 : static_cast<std::uint64_t>([launched timeIntervalSince1970] * 1000);
}

} // namespace

bool CocoaWorkspace::openURL(const foundation::URL& url) {
    @autoreleasepool {
        NSURL* address = [NSURL URLWithString:toNSString(url.absoluteString())];
        return address != nil && [[NSWorkspace sharedWorkspace] openURL:address];
    }
}

bool CocoaWorkspace::launchApplication(const std::string& path) {
    @autoreleasepool {
        return [[NSWorkspace sharedWorkspace] launchApplication:toNSString(path)];
    }
}

bool CocoaWorkspace::selectFile(const std::string& path, const std::string& root) {
    // For a missing item the system can show a window of another folder and call that a success.
    struct stat status {};
    if (path.empty() || path.front() != '/' || ::lstat(path.c_str(), &status) != 0)
        return false;
    @autoreleasepool {
        return [[NSWorkspace sharedWorkspace] selectFile:toNSString(path) inFileViewerRootedAtPath:toNSString(root)];
    }
}

bool CocoaWorkspace::destroyFiles(const std::string& folder, const std::vector<std::string>& names) {
    return platform::destroyFiles(fileChanges_, folder, names);
}

std::vector<RunningApplication> CocoaWorkspace::runningApplications(const std::string& bundleIdentifier) {
    std::vector<RunningApplication> applications;
    @autoreleasepool {
        NSArray* found = [NSRunningApplication runningApplicationsWithBundleIdentifier:toNSString(bundleIdentifier)];
        for (NSRunningApplication* application in found) {
            if (![application isTerminated] && [application processIdentifier] != ::getpid())
                applications.push_back({[application processIdentifier], startTimeOf(application)});
        }
    }
    return applications;
}

void CocoaWorkspace::terminate(const RunningApplication& application) {
    @autoreleasepool {
        NSRunningApplication* process =
            [NSRunningApplication runningApplicationWithProcessIdentifier:application.processId];
        if (process == nil || startTimeOf(process) != application.startTime)
            return;
        [process terminate];
        std::this_thread::sleep_for(quitWait);
    }
}

} // namespace platform
