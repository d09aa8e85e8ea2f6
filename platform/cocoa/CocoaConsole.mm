#include "platform/cocoa/CocoaConsole.h"

#include "foundation/MessageText.h"
#include "platform/cocoa/CocoaText.h"

#import <Foundation/Foundation.h>

namespace platform {

void CocoaConsole::log(const std::string& message) {
    if (message.empty())
        return;
    @autoreleasepool {
        NSLog(@"%@", toNSString(foundation::printableText(message)));
    }
}

} // namespace platform
