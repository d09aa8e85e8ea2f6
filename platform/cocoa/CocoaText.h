#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

namespace platform {

// The text as an autoreleased string; bytes that are no UTF-8 become replacement marks.
NSString* toNSString(std::string_view text);

// UTF-8; nil becomes an empty text, and halves of surrogate pairs become marks.
std::string fromNSString(NSString* text);

} // namespace platform
