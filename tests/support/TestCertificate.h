#pragma once

#include <memory>
#include <openssl/ssl.h>
#include <string>

// A fresh key with a certificate signed by itself, for servers of tests.
class TestCertificate {
public:
    // `names`: for whom it stands, such as "IP:127.0.0.1" or "DNS:localhost".
    explicit TestCertificate(const std::string& names);

    // The certificate in PEM.
    std::string pem() const;

    // Makes the server show it.
    void install(SSL_CTX& context) const;

private:
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key_;
    std::unique_ptr<X509, decltype(&X509_free)> certificate_;
};
