#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace foundation {

// The length in bytes of the well-formed UTF-8 character that the bytes begin with; 0 when they begin with none.
std::size_t utf8SequenceLength(std::string_view bytes);

// Whether the bytes are well-formed UTF-8.
bool isValidUtf8(std::string_view bytes);

// The bytes with U+FFFD in place of each one that belongs to no well-formed UTF-8 character.
std::string makingValidUtf8(std::string_view bytes);

// How many UTF-16 code units the UTF-8 text has.
std::size_t utf16Length(std::string_view utf8);

// UTF-8 text of UTF-8, UTF-16 or UTF-32 bytes. A byte-order mark decides and is dropped; without one, the zero bytes
// among the first four decide. Nothing when the bytes are not well formed.
std::optional<std::string> decodeUnicode(std::string_view bytes);

// Appends the code point as UTF-8.
void appendUtf8(std::string& text, char32_t codePoint);

// Appends the character that the next UTF-16 unit stands for, or the next two where they are a surrogate pair. Asks for
// no more units than that; false when they stand for no character, or when there is none (`nextUnit` gives nothing).
bool appendUtf16(std::string& text, const std::function<std::optional<char32_t>()>& nextUnit);

} // namespace foundation
