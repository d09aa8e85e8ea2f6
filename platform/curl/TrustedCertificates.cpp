#include "platform/curl/TrustedCertificates.h"

#include "platform/transfers/SourceFile.h"

#include <cstdlib>
#include <curl/curl.h>
#include <filesystem>

namespace platform::curl {

namespace {

constexpr std::size_t longestBundle = std::size_t{16} << 20;

std::string contents(const char* path) {
    if (path == nullptr)
        return {};
    const auto file = transfers::SourceFile::open(path);
    return file ? file->readAll(longestBundle).value_or("") : std::string();
}

// Such as "5ad8a5d6.0".
bool isHashedName(const std::string& name) {
    return name.size() > 9 && name[8] == '.' && name.find_first_not_of("0123456789abcdef") == 8 &&
           name.find_first_not_of("0123456789", 9) == std::string::npos;
}

bool hasHashedNames(const std::string& folder) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (isHashedName(entry->path().filename()))
            return true;
    return false;
}

} // namespace

TrustedCertificates TrustedCertificates::ofSystemAndEnvironment() {
    const curl_version_info_data& library = *curl_version_info(CURLVERSION_NOW);
    TrustedCertificates trusted;
    // Reading the whole bundle for each connection takes longer than the connection, and megabytes of memory.
    if (library.capath != nullptr && hasHashedNames(library.capath))
        trusted.folder = library.capath;
    trusted.bundle = contents(std::getenv("SSL_CERT_FILE"));
    if (trusted.bundle.empty())
        return trusted;
    const std::string system = contents(library.cainfo);
    if (trusted.bundle == system)
        trusted.bundle.clear();
    else if (trusted.folder.empty())
        trusted.bundle = system + "\n" + trusted.bundle;
    return trusted;
}

} // namespace platform::curl
