#pragma once

#include <map>
#include <optional>
#include <string>

namespace platform {

// Reads the whole text of an INI file of settings: all values by key, as texts. A list comes back with ", " between its
// entries. Nothing when any part of it is no settings text, because writing such a file anew would lose that part.
std::optional<std::map<std::string, std::string>> parseSettings(const std::string& bytes);

} // namespace platform
