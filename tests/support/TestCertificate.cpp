#include "tests/support/TestCertificate.h"

#include <openssl/pem.h>
#include <openssl/x509v3.h>

TestCertificate::TestCertificate(const std::string& names)
    : key_(EVP_EC_gen("P-256"), &EVP_PKEY_free), certificate_(X509_new(), &X509_free) {
    X509* certificate = certificate_.get();
    X509_set_version(certificate, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate), 3600);
    X509_set_pubkey(certificate, key_.get());
    X509_NAME* name = X509_get_subject_name(certificate);
    const std::string person = "Test server";
    const auto* bytes = reinterpret_cast<const unsigned char*>(person.c_str());
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, bytes, -1, -1, 0);
    X509_set_issuer_name(certificate, name);
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, names.c_str());
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
    X509_sign(certificate, key_.get(), EVP_sha256());
}

std::string TestCertificate::pem() const {
    const std::unique_ptr<BIO, decltype(&BIO_free)> memory(BIO_new(BIO_s_mem()), &BIO_free);
    PEM_write_bio_X509(memory.get(), certificate_.get());
    char* bytes = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &bytes);
    return {bytes, static_cast<std::size_t>(length)};
}

void TestCertificate::install(SSL_CTX& context) const {
    SSL_CTX_use_certificate(&context, certificate_.get());
    SSL_CTX_use_PrivateKey(&context, key_.get());
}
