#pragma once

#include "foundation/Value.h"

#include <optional>
#include <string>

namespace platform {

// Reads an XML property list. Dates and data come as the text that stands there. Nothing for any other bytes, the
// binary form among them, and for nesting beyond any honest file.
std::optional<foundation::Value> parsePropertyList(const std::string& bytes);

} // namespace platform
