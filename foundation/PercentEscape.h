#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace foundation {

// Escapes every ASCII character that may not stand in a URL, "%" and the brackets included; reserved characters stay.
// Nothing when the text holds a character beyond ASCII.
std::optional<std::string> addingPercentEscapes(std::string_view text);

// Whether the character may stand unescaped in a URL.
bool isLegalInURL(char character);

// Writes the byte as "%" and two upper-case hexadecimal digits.
void appendPercentEscape(std::string& text, char byte);

// The bytes that the escapes stand for. Malformed escapes stay as they are.
std::string removingPercentEscapes(std::string_view text);

} // namespace foundation
