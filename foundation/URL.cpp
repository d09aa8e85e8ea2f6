#include "foundation/URL.h"

#include "foundation/PathString.h"
#include "foundation/PercentEscape.h"
#include "foundation/Unicode.h"

#include <cctype>

namespace foundation {

namespace {

bool isHexDigit(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

bool isAcceptable(std::string_view text) {
    bool fragment = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (isLegalInURL(c) || c == '[' || c == ']')
            continue;
        if (c == '#' && !fragment)
            fragment = true;
        else if (c == '%' && i + 2 < text.size() && isHexDigit(text[i + 1]) && isHexDigit(text[i + 2]))
            i += 2;
        else
            return false;
    }
    return true;
}

// The length of the scheme with its colon; 0 for a URL without one.
std::size_t schemeLength(std::string_view text) {
    if (text.empty() || std::isalpha(static_cast<unsigned char>(text.front())) == 0)
        return 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == ':')
            return i + 1;
        if (std::isalnum(static_cast<unsigned char>(c)) == 0 && c != '+' && c != '-' && c != '.')
            return 0;
    }
    return 0;
}

struct Extent {
    std::size_t begin;
    std::size_t end;
};

Extent authorityExtent(std::string_view text) {
    const std::size_t begin = schemeLength(text);
    if (text.substr(begin, 2) != "//")
        return {begin, begin};
    return {begin, std::min(text.find_first_of("/?#", begin + 2), text.size())};
}

} // namespace

std::optional<URL> URL::withString(std::string_view text) {
    if (!isAcceptable(text))
        return std::nullopt;
    const Extent authority = authorityExtent(text);
    std::string string;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool bracket = text[i] == '[' || text[i] == ']';
        if (bracket && (i < authority.begin || i >= authority.end))
            appendPercentEscape(string, text[i]);
        else
            string += text[i];
    }
    return URL(std::move(string));
}

URL URL::fileURLWithPath(std::string_view path) {
    std::string string = "file://";
    for (const char c : path)
        if (isLegalInURL(c) && c != ';' && c != '?')
            string += c;
        else
            appendPercentEscape(string, c);
    return URL(std::move(string));
}

std::string URL::scheme() const {
    const std::size_t length = schemeLength(string_);
    return length == 0 ? std::string() : string_.substr(0, length - 1);
}

std::optional<std::string> URL::rawPath() const {
    if (string_.empty())
        return std::nullopt;
    const Extent authority = authorityExtent(string_);
    const std::size_t end = std::min(string_.find_first_of("?#", authority.end), string_.size());
    std::string raw = string_.substr(authority.end, end - authority.end);
    const bool opaque = schemeLength(string_) > 0 && authority.begin == authority.end && raw.substr(0, 1) != "/";
    if (opaque)
        return std::nullopt;
    return raw;
}

std::optional<std::string> URL::decoded(const std::string& raw) const {
    std::string text = removingPercentEscapes(raw);
    if (scheme() != "file" && !isValidUtf8(text))
        return std::nullopt;
    return text;
}

std::optional<std::string> URL::path() const {
    auto raw = rawPath();
    if (!raw)
        return std::nullopt;
    if (raw->size() > 1 && raw->back() == '/')
        raw->pop_back();
    return decoded(*raw);
}

std::string URL::lastPathComponent() const {
    auto raw = rawPath();
    if (!raw || raw->empty())
        return {};
    if (*raw == "/")
        return "/";
    if (raw->back() == '/')
        raw->pop_back();
    const auto slash = raw->rfind('/');
    return decoded(slash == std::string::npos ? *raw : raw->substr(slash + 1)).value_or("");
}

} // namespace foundation
