// Transfers over TLS: whom they trust, and what they refuse.

#include "platform/curl/TrustedCertificates.h"
#include "tests/contract/TransfersTest.h"

#include <curl/curl.h>

namespace tests {

namespace {

namespace Code = platform::URLErrorCode;

class SecureTransfersTest : public TransfersTest {
protected:
    // From here on, until the test ends, these certificates are trusted.
    void trust(const TestCertificate& certificate) {
        ::setenv("SSL_CERT_FILE", folder_.write("trusted.pem", certificate.pem()).c_str(), 1);
        forgetTransfers();
    }

    std::string messages(const std::string& url) { return download(url)->text; }

    static std::string systemBundle() { return curl_version_info(CURLVERSION_NOW)->cainfo; }

    const TestCertificate certificate_{"IP:127.0.0.1"};
};

} // namespace

TEST_F(SecureTransfersTest, TrustsOnlyWhatItIsToldTo) {
    LoopbackServer server(&certificate_);
    server.answer("/file", answerOf("200 OK", "secret"));
    EXPECT_EQ(messages(server.url("/file")), failure(Code::secureConnectionFailed));
    EXPECT_EQ(fetch(server.url("/file")), std::nullopt);
    EXPECT_EQ(post(server.url("/file"))->text, failure(Code::secureConnectionFailed));
    EXPECT_TRUE(server.requests().empty());

    trust(certificate_);
    EXPECT_EQ(messages(server.url("/file")), "response 6 data finish ");
    EXPECT_EQ(fetch(server.url("/file")), "secret");
    EXPECT_EQ(post(server.url("/file"))->text, "response data finish ");
}

TEST_F(SecureTransfersTest, ChecksTheNameOfTheServer) {
    const TestCertificate other("DNS:elsewhere.invalid");
    LoopbackServer server(&other);
    trust(other);
    EXPECT_EQ(messages(server.url("/file")), failure(Code::secureConnectionFailed));
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(SecureTransfersTest, RefusesOldEncryption) {
    trust(certificate_);
    const std::pair<int, std::string> cases[] = {{TLS1_1_VERSION, failure(Code::secureConnectionFailed)},
                                                 {TLS1_2_VERSION, "response 6 data finish "},
                                                 {TLS1_3_VERSION, "response 6 data finish "}};
    for (const auto& [newest, expected] : cases) {
        LoopbackServer server(&certificate_, newest);
        server.answer("/file", answerOf("200 OK", "secret"));
        EXPECT_EQ(messages(server.url("/file")), expected) << newest;
    }
}

TEST_F(SecureTransfersTest, CutConnectionIsNoEnd) {
    trust(certificate_);
    LoopbackServer server(&certificate_);
    server.answer("/file", {"HTTP/1.1 200 OK\r\n\r\nuntil the end", LoopbackServer::Ending::Reset});
    EXPECT_TRUE(messages(server.url("/file")).ends_with(failure(Code::networkConnectionLost)));
    EXPECT_EQ(filesInFolder(), "trusted.pem ");
}

TEST_F(SecureTransfersTest, RedirectsNeverLeaveEncryption) {
    trust(certificate_);
    LoopbackServer open;
    LoopbackServer secure(&certificate_);
    open.answer("/file", answerOf("200 OK", "open"));
    open.answer("/toSecure", redirectTo(secure.url("/file")));
    open.answer("/toSecureAndBack", redirectTo(secure.url("/toOpen")));
    secure.answer("/file", answerOf("200 OK", "secret"));
    secure.answer("/toSecure", redirectTo(secure.url("/file")));
    secure.answer("/toOpen", redirectTo(open.url("/file")));
    EXPECT_EQ(messages(secure.url("/toSecure")), "response 6 data finish ");
    EXPECT_EQ(messages(open.url("/toSecure")), "response 6 data finish ");
    EXPECT_EQ(messages(secure.url("/toOpen")), failure(Code::unsupportedURL));
    EXPECT_EQ(messages(open.url("/toSecureAndBack")), failure(Code::unsupportedURL));
    for (const auto& request : open.requests())
        EXPECT_EQ(request.head.find("/file"), std::string::npos);
}

TEST_F(SecureTransfersTest, FurtherCertificatesComeOnTopOfTheSystems) {
    using platform::curl::TrustedCertificates;
    const auto system = TrustedCertificates::ofSystemAndEnvironment();
    EXPECT_EQ(system.bundle, "");
    trust(certificate_);
    std::ostringstream systems;
    systems << std::ifstream(systemBundle()).rdbuf();
    const auto both = TrustedCertificates::ofSystemAndEnvironment();
    EXPECT_EQ(both.folder, system.folder);
    EXPECT_EQ(both.bundle, (both.folder.empty() ? systems.str() + "\n" : "") + certificate_.pem());
    for (const auto& other : {folder_.path(), folder_.path("absent"), systemBundle(), std::string()}) {
        ::setenv("SSL_CERT_FILE", other.c_str(), 1);
        EXPECT_EQ(TrustedCertificates::ofSystemAndEnvironment().bundle, "") << other;
    }
}

} // namespace tests
