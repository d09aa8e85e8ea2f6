#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace foundation {

// A checked URL string and its parts. It may have no scheme: a URL made from a plain path has that path as its string
// form.
class URL {
public:
    // The URL of the text, or nothing when it holds a character that no URL may hold. Empty text is a URL.
    static std::optional<URL> withString(std::string_view text);

    // The "file" URL of an absolute path; any bytes are allowed in the path.
    static URL fileURLWithPath(std::string_view path);

    const std::string& absoluteString() const { return string_; }

    // The part before the colon, or empty.
    std::string scheme() const;

    // The decoded path without its trailing slash. Nothing for a URL that has no hierarchy ("mailto:x") and for escapes
    // that do not decode to UTF-8, except in file URLs, where names are bytes.
    std::optional<std::string> path() const;

    // The last name in the path, decoded: it can be empty, "/" or hold a slash that came from an escape.
    std::string lastPathComponent() const;

    friend bool operator==(const URL&, const URL&) = default;

private:
    explicit URL(std::string text) : string_(std::move(text)) {}
    std::optional<std::string> rawPath() const;
    std::optional<std::string> decoded(const std::string& raw) const;

    std::string string_;
};

} // namespace foundation
