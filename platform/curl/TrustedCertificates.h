#pragma once

#include <string>

namespace platform::curl {

// The certificates to trust, in PEM: the system's and those of the file that the environment variable SSL_CERT_FILE
// names. Empty when the library's own choice is all there is.
std::string trustedCertificates();

} // namespace platform::curl
