#pragma once

#include "foundation/Result.h"

#include <map>
#include <string>
#include <string_view>

namespace foundation {

// Reads one JSON array or object, in UTF-8, UTF-16 or UTF-32. Never throws: any other input gives an error of the
// domain "NSCocoaErrorDomain", code 3840. Nesting beyond 512 levels is such an error.
Result<Value> parseJSON(std::string_view bytes);

// Compact JSON of an object of texts, keys in ascending order, slashes escaped. An error of the same domain where a
// text is not UTF-8.
Result<std::string> serializeJSON(const std::map<std::string, std::string>& object);

} // namespace foundation
