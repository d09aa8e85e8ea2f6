#pragma once

#include "foundation/Error.h"
#include "foundation/URL.h"

#include <cstddef>
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

// How many UTF-16 code units the UTF-8 text has.
std::size_t utf16Length(std::string_view utf8);

// Whether the bytes are well-formed UTF-8.
bool isValidUtf8(std::string_view bytes);

// UTF-8 text of UTF-8, UTF-16 or UTF-32 bytes. A byte-order mark decides and is dropped; without one, the zero bytes
// among the first four decide. Nothing when the bytes are not well formed.
std::optional<std::string> decodeUnicode(std::string_view bytes);

// Appends the code point as UTF-8.
void appendUtf8(std::string& text, char32_t codePoint);

// The text with control bytes shown as backslash escapes, so that it stays on one line and cannot drive a terminal.
std::string visible(std::string_view text);

} // namespace foundation
