// Starts the program of an application bundle that is laid out as on a Mac; GNUstep's own wants another layout. What
// the desktop adds (one copy at a time, the Dock, quarantine) cannot be seen here.

#include <spawn.h>
#include <unistd.h>

@implementation NSWorkspace (StandIn)

- (BOOL)launchApplication:(NSString*)path {
    NSDictionary* information =
        [NSDictionary dictionaryWithContentsOfFile:[path stringByAppendingPathComponent:@"Contents/Info.plist"]];
    NSString* name = [information objectForKey:@"CFBundleExecutable"];
    if (name == nil)
        return NO;
    NSString* program = [[path stringByAppendingPathComponent:@"Contents/MacOS"] stringByAppendingPathComponent:name];
    char* arguments[] = {const_cast<char*>([program fileSystemRepresentation]), nullptr};
    pid_t child = 0;
    return ::posix_spawn(&child, arguments[0], nullptr, nullptr, arguments, environ) == 0;
}

@end
