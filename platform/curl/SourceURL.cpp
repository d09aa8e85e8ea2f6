#include "platform/curl/SourceURL.h"

#include <algorithm>

namespace platform::curl {

namespace {

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

} // namespace

SourceKind kindOf(const foundation::URL& url) {
    const std::string scheme = lowerCase(url.scheme());
    if (scheme == "http" || scheme == "https")
        return SourceKind::Web;
    return scheme == "file" ? SourceKind::File : SourceKind::Unsupported;
}

bool isSecure(const std::string& url) {
    return lowerCase(url.substr(0, 6)) == "https:";
}

std::optional<std::string> localPath(const foundation::URL& url) {
    const std::string& text = url.absoluteString();
    const std::size_t begin = url.scheme().size() + 1;
    if (text.compare(begin, 2, "//") == 0) {
        const std::string host = lowerCase(text.substr(begin + 2, text.find('/', begin + 2) - begin - 2));
        if (!host.empty() && host != "localhost")
            return std::nullopt;
    }
    return url.path();
}

} // namespace platform::curl
