#pragma once

#include "platform/curl/TrustedCertificates.h"
#include "platform/transfers/Loader.h"
#include "platform/transfers/TransferLimits.h"

#include <array>
#include <curl/curl.h>
#include <memory>
#include <string>

namespace platform::curl {

// What every web transfer is set up with.
struct WebSettings {
    transfers::TransferLimits limits;
    TrustedCertificates trusted;
};

// One libcurl request, with the rules that hold for all of ours: certificates checked, TLS 1.2 or newer, redirects
// within the web and never from an encrypted to an open connection, the body as it was served.
class EasyHandle {
public:
    // `settings` must outlive the handle.
    EasyHandle(const std::string& url, const WebSettings& settings);
    EasyHandle(const EasyHandle&) = delete;
    EasyHandle& operator=(const EasyHandle&) = delete;

    // The request may be sent once at each address, though the library would send it again when a kept connection turns
    // out to be closed.
    void sendAtMostOnce();

    // Null when the library did not take every setting: a transfer without one of them must not run.
    CURL* get() const { return usable_ ? handle_.get() : nullptr; }

    // The parts of a setting that are passed by address must outlive the handle.
    template <class Argument>
    void set(CURLoption option, Argument argument) {
        usable_ = usable_ && curl_easy_setopt(handle_.get(), option, argument) == CURLE_OK;
    }

    // Makes it a POST; `request` must outlive the handle.
    void setPost(const transfers::WebRequest& request);

    long number(CURLINFO info) const;
    curl_off_t size(CURLINFO info) const;

    // Where the request has got to, after redirects.
    std::string url() const;

    // What the result means, with the library's own words.
    transfers::TransferFailure failure(CURLcode result) const;

private:
    void setSecurity(const std::string& url, const WebSettings& settings);
    void setTrust(const TrustedCertificates& trusted);
    static int checkRequest(void* self, char* peer, char* local, int peerPort, int localPort);

    std::array<char, CURL_ERROR_SIZE> errorText_{};
    std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> headers_;
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle_;
    bool usable_;
    bool secure_ = false;
    bool sentAtMostOnce_ = false;
    // How many redirects had been followed at the last request that was sent; -1 before the first.
    long sentAfterRedirects_ = -1;
    bool sentAgain_ = false;
};

} // namespace platform::curl
