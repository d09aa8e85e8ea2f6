#include "foundation/Unicode.h"

#include <array>

namespace foundation {

std::size_t utf8SequenceLength(std::string_view bytes) {
    if (bytes.empty())
        return 0;
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

namespace {

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

char32_t unitAt(std::string_view bytes, std::size_t at, std::size_t size, bool bigEndian) {
    char32_t unit = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t index = bigEndian ? at + i : at + size - 1 - i;
        unit = unit << 8U | static_cast<unsigned char>(bytes[index]);
    }
    return unit;
}

bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

std::optional<std::string> decodeUtf16(std::string_view bytes, bool bigEndian) {
    std::size_t at = 0;
    const auto next = [&]() -> std::optional<char32_t> {
        if (bytes.size() - at < 2)
            return std::nullopt;
        at += 2;
        return unitAt(bytes, at - 2, 2, bigEndian);
    };
    std::string text;
    while (at < bytes.size())
        if (!appendUtf16(text, next))
            return std::nullopt;
    return text;
}

std::optional<std::string> decodeUtf32(std::string_view bytes, bool bigEndian) {
    if (bytes.size() % 4 != 0)
        return std::nullopt;
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 4) {
        const char32_t codePoint = unitAt(bytes, at, 4, bigEndian);
        if (isHighSurrogate(codePoint) || isLowSurrogate(codePoint) || codePoint > 0x10FFFF)
            return std::nullopt;
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
        const std::size_t length = utf8SequenceLength(bytes);
        if (length == 0)
            return false;
        bytes.remove_prefix(length);
    }
    return true;
}

std::string makingValidUtf8(std::string_view bytes) {
    std::string text;
    while (!bytes.empty()) {
        const std::size_t length = utf8SequenceLength(bytes);
        if (length == 0)
            text += "\xEF\xBF\xBD";
        else
            text += bytes.substr(0, length);
        bytes.remove_prefix(length == 0 ? 1 : length);
    }
    return text;
}

std::optional<std::string> decodeUnicode(std::string_view bytes) {
    switch (detectEncoding(bytes)) {
    case Encoding::Utf8:
        return isValidUtf8(bytes) ? std::optional(std::string(bytes)) : std::nullopt;
    case Encoding::Utf16BigEndian:
        return decodeUtf16(bytes, true);
    case Encoding::Utf16LittleEndian:
        return decodeUtf16(bytes, false);
    case Encoding::Utf32BigEndian:
        return decodeUtf32(bytes, true);
    case Encoding::Utf32LittleEndian:
        return decodeUtf32(bytes, false);
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

bool appendUtf16(std::string& text, const std::function<std::optional<char32_t>()>& nextUnit) {
    const auto unit = nextUnit();
    if (!unit || isLowSurrogate(*unit))
        return false;
    if (!isHighSurrogate(*unit)) {
        appendUtf8(text, *unit);
        return true;
    }
    const auto low = nextUnit();
    if (!low || !isLowSurrogate(*low))
        return false;
    appendUtf8(text, 0x10000 + ((*unit - 0xD800) << 10U) + (*low - 0xDC00));
    return true;
}

} // namespace foundation
