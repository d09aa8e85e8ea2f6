#include "platform/cocoa/CocoaText.h"

#include "foundation/Unicode.h"

#include <algorithm>

namespace platform {
namespace {

std::string withMarks(std::string_view text) {
    std::string marked;
    while (!text.empty()) {
        const std::size_t length = foundation::utf8SequenceLength(text);
        marked += length == 0 ? "\xEF\xBF\xBD" : text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return marked;
}

NSString* stringWithUtf8(std::string_view text) {
    NSString* string = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
    return [string autorelease];
}

} // namespace

NSString* toNSString(std::string_view text) {
    if (text.empty())
        return @"";
    return foundation::isValidUtf8(text) ? stringWithUtf8(text) : stringWithUtf8(withMarks(text));
}

std::string fromNSString(NSString* text) {
    NSData* bytes = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
    if ([bytes length] == 0)
        return {};
    return {static_cast<const char*>([bytes bytes]), static_cast<std::size_t>([bytes length])};
}

} // namespace platform
