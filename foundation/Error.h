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

    // One line of about 4 KB at most for the console. Domain and information can come from a server: control bytes are
    // shown as escapes, and an ellipsis stands for what is left out.
    std::string description() const;
};

} // namespace foundation
