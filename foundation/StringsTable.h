#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace foundation {

// The texts of a ".strings" file by key: `"key" = "text";` with comments and escapes, in UTF-8, or in UTF-16. Nothing
// when any part of it cannot be read, because a half-read table would mix languages on one screen.
std::optional<std::map<std::string, std::string>> parseStringsTable(std::string_view bytes);

} // namespace foundation
