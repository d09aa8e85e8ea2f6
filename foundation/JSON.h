#pragma once

#include "foundation/Error.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace foundation {

// Reads one JSON array or object, in UTF-8, UTF-16 or UTF-32. Never throws: any other input gives an error of the
// domain "NSCocoaErrorDomain", code 3840. Nesting beyond 512 levels is such an error.
std::variant<Value, Error> parseJSON(std::string_view bytes);

// Compact JSON of an object of texts, keys in ascending order, slashes escaped. An error of the same domain where a
// text is not UTF-8.
std::variant<std::string, Error> serializeJSON(const std::map<std::string, std::string>& object);

} // namespace foundation
