#include "foundation/PercentEscape.h"

namespace foundation {

namespace {

int hexValue(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    return -1;
}

} // namespace

bool isLegalInURL(char character) {
    if ((character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
        (character >= '0' && character <= '9'))
        return true;
    return character != '\0' && std::string_view("!$&'()*+,-./:;=?@_~").find(character) != std::string_view::npos;
}

void appendPercentEscape(std::string& text, char byte) {
    static constexpr std::string_view digits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    text += {'%', digits[value >> 4U], digits[value & 0xFU]};
}

std::optional<std::string> addingPercentEscapes(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (static_cast<unsigned char>(character) >= 0x80)
            return std::nullopt;
        if (isLegalInURL(character))
            result += character;
        else
            appendPercentEscape(result, character);
    }
    return result;
}

std::string removingPercentEscapes(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 && hexValue(text[i + 2]) >= 0) {
            result += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

} // namespace foundation
