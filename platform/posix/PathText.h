#pragma once

#include <string>

namespace platform {

// Whether a text can be a path at all: not empty, and no zero byte that would cut it short.
bool isPath(const std::string& text);

// Whether the text names an item within a folder, and nothing outside of it.
bool isPlainName(const std::string& text);

// Whether the name is "." or "..".
bool isDots(const std::string& name);

} // namespace platform
