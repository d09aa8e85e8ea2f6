#pragma once

#include "foundation/Error.h"
#include "foundation/URL.h"

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace foundation {

// What an absent value prints as.
inline constexpr const char* absentText = "(null)";

// The text of a value for a message; absent values print "(null)".
std::string textOf(const std::optional<std::string>& text);
std::string textOf(const std::optional<URL>& url);
std::string textOf(const std::optional<Error>& error);

// The format with each "%@" replaced, in order, by one argument. Arguments are inserted as they are.
std::string format(std::string_view pattern, std::initializer_list<std::string_view> arguments);

// Stands for what was left out of a text.
inline constexpr const char* ellipsis = "\xE2\x80\xA6";

// The text, or as much of its beginning as fits in so many bytes, and an ellipsis. No character is cut in two.
std::string clipped(std::string_view text, std::size_t mostBytes);

// The text with control bytes shown as backslash escapes, so that it stays on one line and cannot drive a terminal.
std::string visible(std::string_view text);

// As `visible`, but line ends and tabs stay, because they lay a text of several lines out.
std::string printableText(std::string_view text);

// The text for a terminal that shows ASCII alone: punctuation by what looks most like it, other characters by "?".
std::string asciiText(std::string_view utf8);

} // namespace foundation
