#include "platform/curl/TrustedCertificates.h"

#include "platform/curl/SourceFile.h"

#include <cstdlib>
#include <curl/curl.h>

namespace platform::curl {

namespace {

constexpr std::size_t longestBundle = std::size_t{16} << 20;

std::string contents(const char* path) {
    if (path == nullptr)
        return {};
    const auto file = SourceFile::open(path);
    if (std::holds_alternative<TransferFailure>(file))
        return {};
    return std::get<SourceFile>(file).readAll(longestBundle).value_or("");
}

} // namespace

std::string trustedCertificates() {
    const std::string further = contents(std::getenv("SSL_CERT_FILE"));
    const std::string system = contents(curl_version_info(CURLVERSION_NOW)->cainfo);
    // The variable often names the system's own; reading those twice would slow down every connection.
    if (further.empty() || further == system)
        return {};
    return system + "\n" + further;
}

} // namespace platform::curl
