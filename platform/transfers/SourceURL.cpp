#include "platform/transfers/SourceURL.h"

#include "platform/Transfers.h"

#include <algorithm>
#include <cstddef>

namespace platform::transfers {

namespace {

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

// What stands between "//" and the path; nothing when there is no "//".
std::optional<std::string> authority(const foundation::URL& url) {
    const std::string& text = url.absoluteString();
    const std::size_t begin = url.scheme().size() + 1;
    if (text.compare(begin, 2, "//") != 0)
        return std::nullopt;
    return text.substr(begin + 2, text.find_first_of("/?#", begin + 2) - begin - 2);
}

bool hasHost(const foundation::URL& url) {
    const std::string text = authority(url).value_or("");
    const std::size_t host = text.rfind('@') + 1;
    return host < text.size() && text[host] != ':';
}

} // namespace

bool isFileURL(const foundation::URL& url) {
    return lowerCase(url.scheme()) == "file";
}

std::optional<TransferFailure> webURLFailure(const foundation::URL& url) {
    const std::string scheme = lowerCase(url.scheme());
    if (scheme != "http" && scheme != "https")
        return TransferFailure{URLErrorCode::unsupportedURL, "Addresses of this kind are not supported.", {}};
    if (!hasHost(url))
        return TransferFailure{URLErrorCode::badURL, "The address is not valid: it names no server.", {}};
    return std::nullopt;
}

bool isSecure(const std::string& url) {
    return lowerCase(url.substr(0, 6)) == "https:";
}

std::optional<std::string> localPath(const foundation::URL& url) {
    const std::string host = lowerCase(authority(url).value_or(""));
    if (!host.empty() && host != "localhost")
        return std::nullopt;
    return url.path();
}

} // namespace platform::transfers
