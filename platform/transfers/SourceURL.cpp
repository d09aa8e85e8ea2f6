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

// Of an address without its scheme: what stands between "//" and the path; nothing when there is no "//".
std::optional<std::string> authority(const std::string& rest) {
    if (rest.compare(0, 2, "//") != 0)
        return std::nullopt;
    return rest.substr(2, rest.find_first_of("/?#", 2) - 2);
}

std::string withoutScheme(const foundation::URL& url) {
    return url.absoluteString().substr(url.scheme().size() + 1);
}

bool hasHost(const std::string& rest) {
    const std::string text = authority(rest).value_or("");
    const std::size_t host = text.rfind('@') + 1;
    return host < text.size() && text[host] != ':';
}

TransferFailure noHostFailure() {
    return {URLErrorCode::badURL, "The address is not valid: it names no server.", {}};
}

} // namespace

bool isFileURL(const foundation::URL& url) {
    return lowerCase(url.scheme()) == "file";
}

std::optional<TransferFailure> webURLFailure(const foundation::URL& url) {
    const std::string scheme = lowerCase(url.scheme());
    if (scheme != "http" && scheme != "https")
        return TransferFailure{URLErrorCode::unsupportedURL, "Addresses of this kind are not supported.", {}};
    return hasHost(withoutScheme(url)) ? std::nullopt : std::optional(noHostFailure());
}

std::optional<TransferFailure> redirectTargetFailure(const std::string& location) {
    const std::string scheme = lowerCase(location.substr(0, location.find_first_of(":/?#")));
    const bool hasScheme = location.compare(scheme.size(), 1, ":") == 0;
    const bool isWeb = hasScheme ? scheme == "http" || scheme == "https" : location.compare(0, 2, "//") == 0;
    const std::string rest = hasScheme ? location.substr(scheme.size() + 1) : location;
    return isWeb && !hasHost(rest) ? std::optional(noHostFailure()) : std::nullopt;
}

bool isSecure(const std::string& url) {
    return lowerCase(url.substr(0, 6)) == "https:";
}

std::optional<std::string> localPath(const foundation::URL& url) {
    const std::string host = lowerCase(authority(withoutScheme(url)).value_or(""));
    if (!host.empty() && host != "localhost")
        return std::nullopt;
    return url.path();
}

} // namespace platform::transfers
