#include "foundation/Text.h"

#include <array>

namespace foundation {

std::string textOf(const std::optional<std::string>& text) {
    return text.value_or(absentText);
}

std::string textOf(const std::optional<URL>& url) {
    return url ? url->absoluteString() : absentText;
}

std::string textOf(const std::optional<Error>& error) {
    return error ? error->description() : absentText;
}

std::string format(std::string_view pattern, std::initializer_list<std::string_view> arguments) {
    std::string result;
    const auto* argument = arguments.begin();
    while (!pattern.empty()) {
        const auto at = pattern.find("%@");
        result += pattern.substr(0, at);
        if (at == std::string_view::npos)
            break;
        if (argument != arguments.end())
            result += *argument++;
        pattern.remove_prefix(at + 2);
    }
    return result;
}

namespace {

// How long a well-formed sequence at the start of the bytes is; 0 when there is none.
std::size_t sequenceLength(std::string_view bytes) {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
    const auto continues = [&](std::size_t index) { return index < bytes.size() && (byte(index) & 0xC0U) == 0x80U; };
    const unsigned char lead = byte(0);
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return continues(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        if (!continues(1) || !continues(2))
            return 0;
        if (lead == 0xE0 && byte(1) < 0xA0)
            return 0; // written longer than needed
        if (lead == 0xED && byte(1) > 0x9F)
            return 0; // half of a surrogate pair
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        if (!continues(1) || !continues(2) || !continues(3))
            return 0;
        if (lead == 0xF0 && byte(1) < 0x90)
            return 0;
        if (lead == 0xF4 && byte(1) > 0x8F)
            return 0; // beyond U+10FFFF
        return 4;
    }
    return 0;
}

enum class Encoding { Utf8, Utf16BigEndian, Utf16LittleEndian, Utf32BigEndian, Utf32LittleEndian };

Encoding detectEncoding(std::string_view& bytes) {
    struct Mark {
        std::string_view bytes;
        Encoding encoding;
    };
    using namespace std::string_view_literals;
    static constexpr std::array marks{
        Mark{"\xEF\xBB\xBF"sv, Encoding::Utf8},
        Mark{"\x00\x00\xFE\xFF"sv, Encoding::Utf32BigEndian},
        Mark{"\xFF\xFE\x00\x00"sv, Encoding::Utf32LittleEndian},
        Mark{"\xFE\xFF"sv, Encoding::Utf16BigEndian},
        Mark{"\xFF\xFE"sv, Encoding::Utf16LittleEndian},
    };
    for (const Mark& mark : marks) {
        if (bytes.substr(0, mark.bytes.size()) == mark.bytes) {
            bytes.remove_prefix(mark.bytes.size());
            return mark.encoding;
        }
    }
    const auto zero = [&](std::size_t index) { return index < bytes.size() && bytes[index] == '\0'; };
    if (bytes.size() >= 4 && zero(0) && zero(1) && zero(2))
        return Encoding::Utf32BigEndian;
    if (bytes.size() >= 4 && zero(1) && zero(2) && zero(3))
        return Encoding::Utf32LittleEndian;
    if (zero(0))
        return Encoding::Utf16BigEndian;
    if (zero(1))
        return Encoding::Utf16LittleEndian;
    return Encoding::Utf8;
}

std::uint32_t unitAt(std::string_view bytes, std::size_t at, std::size_t size, bool bigEndian) {
    std::uint32_t unit = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t index = bigEndian ? at + i : at + size - 1 - i;
        unit = unit << 8U | static_cast<unsigned char>(bytes[index]);
    }
    return unit;
}

bool isHighSurrogate(std::uint32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool isLowSurrogate(std::uint32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

std::optional<std::string> decodeWide(std::string_view bytes, std::size_t unitSize, bool bigEndian) {
    if (bytes.size() % unitSize != 0)
        return std::nullopt;
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += unitSize) {
        std::uint32_t codePoint = unitAt(bytes, at, unitSize, bigEndian);
        if (isLowSurrogate(codePoint) || codePoint > 0x10FFFF)
            return std::nullopt;
        if (isHighSurrogate(codePoint)) {
            at += unitSize;
            if (unitSize != 2 || at >= bytes.size())
                return std::nullopt;
            const std::uint32_t low = unitAt(bytes, at, unitSize, bigEndian);
            if (!isLowSurrogate(low))
                return std::nullopt;
            codePoint = 0x10000 + ((codePoint - 0xD800) << 10U) + (low - 0xDC00);
        }
        appendUtf8(text, codePoint);
    }
    return text;
}

} // namespace

std::size_t utf16Length(std::string_view utf8) {
    std::size_t length = 0;
    for (const char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0U) != 0x80U)
            length += byte >= 0xF0 ? 2 : 1;
    }
    return length;
}

bool isValidUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t length = sequenceLength(bytes);
        if (length == 0)
            return false;
        bytes.remove_prefix(length);
    }
    return true;
}

std::optional<std::string> decodeUnicode(std::string_view bytes) {
    switch (detectEncoding(bytes)) {
    case Encoding::Utf8:
        return isValidUtf8(bytes) ? std::optional(std::string(bytes)) : std::nullopt;
    case Encoding::Utf16BigEndian:
        return decodeWide(bytes, 2, true);
    case Encoding::Utf16LittleEndian:
        return decodeWide(bytes, 2, false);
    case Encoding::Utf32BigEndian:
        return decodeWide(bytes, 4, true);
    case Encoding::Utf32LittleEndian:
        return decodeWide(bytes, 4, false);
    }
    return std::nullopt;
}

void appendUtf8(std::string& text, char32_t codePoint) {
    const auto put = [&](char32_t byte) { text += static_cast<char>(byte); };
    if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xC0U | codePoint >> 6U);
        put(0x80U | (codePoint & 0x3FU));
    } else if (codePoint < 0x10000) {
        put(0xE0U | codePoint >> 12U);
        put(0x80U | (codePoint >> 6U & 0x3FU));
        put(0x80U | (codePoint & 0x3FU));
    } else {
        put(0xF0U | codePoint >> 18U);
        put(0x80U | (codePoint >> 12U & 0x3FU));
        put(0x80U | (codePoint >> 6U & 0x3FU));
        put(0x80U | (codePoint & 0x3FU));
    }
}

std::string visible(std::string_view text) {
    static constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        const auto byte = static_cast<unsigned char>(text.front());
        // U+0080 to U+009F control a terminal as well.
        const bool wideControl = length == 2 && byte == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0;
        if (length > 0 && byte >= 0x20 && byte != 0x7F && !wideControl) {
            result += text.substr(0, length);
            text.remove_prefix(length);
            continue;
        }
        if (byte == '\n') {
            result += "\\n";
        } else if (byte == '\t') {
            result += "\\t";
        } else {
            result += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
        }
        text.remove_prefix(1);
    }
    return result;
}

} // namespace foundation
