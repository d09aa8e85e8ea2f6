#pragma once

#include "foundation/Value.h"

#include <cstdint>
#include <optional>
#include <string>

namespace foundation {

// The user-information key of an error's text for people.
inline constexpr const char* localizedDescriptionKey = "NSLocalizedDescription";
// The user-information key of an error's text for developers.
inline constexpr const char* debugDescriptionKey = "NSDebugDescription";

inline constexpr const char* cocoaErrorDomain = "NSCocoaErrorDomain";
inline constexpr const char* urlErrorDomain = "NSURLErrorDomain";

// Why an operation failed: a domain, a code within it, and further information.
struct Error {
    std::string domain;
    std::int64_t code = 0;
    Value::Dictionary userInfo;

    // An error whose only further information is `text`, for people.
    static Error withDescription(std::string domain, std::int64_t code, std::string text);

    // One line for the console. Control bytes are shown as escapes, because domain and texts can come from a server.
    std::string description() const;
};

} // namespace foundation
