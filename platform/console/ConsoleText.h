#pragma once

#include <cstddef>
#include <string>

namespace platform {

// The text as whole lines for a person at the descriptor's other end: control bytes are shown as escapes; on a terminal
// it is wrapped between words, with continued lines `indent` columns further in; ASCII where nothing else is shown.
std::string consoleLines(int descriptor, const std::string& text, std::size_t indent = 0);

} // namespace platform
