#pragma once

#include <string>

namespace platform::curl {

// Whom encrypted connections trust: the system's certificates, and those of the file that the environment variable
// SSL_CERT_FILE names. The library's own choice stands for what is empty here.
struct TrustedCertificates {
    // The system's, each found by the hash of its name.
    std::string folder;
    // In PEM. Together with the system's where there is no such folder.
    std::string bundle;

    static TrustedCertificates ofSystemAndEnvironment();
};

} // namespace platform::curl
