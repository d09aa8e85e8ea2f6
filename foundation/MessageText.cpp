#include "foundation/MessageText.h"

#include "foundation/Unicode.h"

#include <algorithm>
#include <array>
#include <utility>

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

std::string clipped(std::string_view text, std::size_t mostBytes) {
    if (text.size() <= mostBytes)
        return std::string(text);
    const auto continues = [&](std::size_t at) { return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U; };
    while (mostBytes > 0 && continues(mostBytes))
        --mostBytes;
    return std::string(text.substr(0, mostBytes)) + ellipsis;
}

std::string visible(std::string_view text) {
    static constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    while (!text.empty()) {
        const std::size_t length = utf8SequenceLength(text);
        const auto byte = static_cast<unsigned char>(text.front());
        // U+0080 to U+009F control a terminal as well.
        const bool wideControl = length == 2 && byte == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0;
        if (length > 0 && byte >= 0x20 && byte != 0x7F && !wideControl) {
            result += text.substr(0, length);
            text.remove_prefix(length);
            continue;
        }
        if (byte == '\n')
            result += "\\n";
        else if (byte == '\t')
            result += "\\t";
        else
            result += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
        text.remove_prefix(1);
    }
    return result;
}

std::string printableText(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of("\n\t"), text.size());
        result += visible(text.substr(0, end));
        result += text.substr(end, 1);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

std::string asciiText(std::string_view utf8) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 14> lookAlikes{{{"\u2018", "'"},
                                                                                               {"\u2019", "'"},
                                                                                               {"\u201A", "'"},
                                                                                               {"\u201C", "\""},
                                                                                               {"\u201D", "\""},
                                                                                               {"\u201E", "\""},
                                                                                               {"\u00AB", "\""},
                                                                                               {"\u00BB", "\""},
                                                                                               {"\u2013", "-"},
                                                                                               {"\u2014", "-"},
                                                                                               {"\u2026", "..."},
                                                                                               {"\u00B7", "."},
                                                                                               {"\u00A0", " "},
                                                                                               {"\u202F", " "}}};
    std::string result;
    while (!utf8.empty()) {
        const std::string_view character = utf8.substr(0, std::max<std::size_t>(utf8SequenceLength(utf8), 1));
        const auto* found = std::find_if(lookAlikes.begin(), lookAlikes.end(),
                                         [&](const auto& entry) { return entry.first == character; });
        if (found != lookAlikes.end())
            result += found->second;
        else
            result += static_cast<unsigned char>(character.front()) < 0x80 ? character : "?";
        utf8.remove_prefix(character.size());
    }
    return result;
}

} // namespace foundation
