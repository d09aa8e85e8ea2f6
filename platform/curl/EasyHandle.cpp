#include "platform/curl/EasyHandle.h"

#include "platform/curl/CurlFailure.h"
#include "platform/transfers/SourceURL.h"

#include <utility>

namespace platform::curl {

namespace {

// In seconds.
constexpr long longestPause = 2;

} // namespace

EasyHandle::EasyHandle(const std::string& url, const WebSettings& settings)
    : headers_(nullptr, &curl_slist_free_all), handle_(curl_easy_init(), &curl_easy_cleanup),
      usable_(handle_ != nullptr) {
    set(CURLOPT_URL, url.c_str());
    set(CURLOPT_ERRORBUFFER, errorText_.data());
    set(CURLOPT_NOSIGNAL, 1L);
    // A name look-up that hangs is left behind instead of waited for.
    set(CURLOPT_QUICK_EXIT, 1L);
    // One file per connection gains nothing from streams within it.
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(settings.limits.connectTimeout.count()));
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, settings.limits.redirects);
    setSecurity(url, settings);
}

void EasyHandle::setSecurity(const std::string& url, const WebSettings& settings) {
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    setTrust(settings.trusted);
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, transfers::isSecure(url) ? "https" : "http,https");
    set(CURLOPT_PREREQFUNCTION, &EasyHandle::checkRequest);
    set(CURLOPT_PREREQDATA, this);
}

void EasyHandle::setTrust(const TrustedCertificates& trusted) {
    if (!trusted.folder.empty()) {
        set(CURLOPT_CAPATH, trusted.folder.c_str());
        set<const char*>(CURLOPT_CAINFO, nullptr);
    }
    if (!trusted.bundle.empty()) {
        // The library only reads it.
        auto* bytes = const_cast<char*>(trusted.bundle.data());
        curl_blob blob{bytes, trusted.bundle.size(), CURL_BLOB_NOCOPY};
        set(CURLOPT_CAINFO_BLOB, &blob);
    }
}

void EasyHandle::sendAtMostOnce() {
    sentAtMostOnce_ = true;
    // So short an age that services do not yet close connections: the request on such a one would be lost.
    set(CURLOPT_MAXAGE_CONN, longestPause);
}

// Called before each request of the chain is sent: the lists of protocols cannot tell an open connection that comes
// after an encrypted one from any other.
int EasyHandle::checkRequest(void* self, char* /*peer*/, char* /*local*/, int /*peerPort*/, int /*localPort*/) {
    auto& handle = *static_cast<EasyHandle*>(self);
    const bool secure = transfers::isSecure(handle.url());
    if (handle.secure_ && !secure)
        return CURL_PREREQFUNC_ABORT;
    handle.secure_ = secure;
    const long redirects = handle.number(CURLINFO_REDIRECT_COUNT);
    handle.sentAgain_ = handle.sentAtMostOnce_ && std::exchange(handle.sentAfterRedirects_, redirects) == redirects;
    if (handle.sentAgain_)
        return CURL_PREREQFUNC_ABORT;
    return CURL_PREREQFUNC_OK;
}

void EasyHandle::setPost(const transfers::WebRequest& request) {
    set(CURLOPT_POST, 1L);
    set(CURLOPT_POSTFIELDS, request.body.data());
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    // "Expect:" without a value keeps the library from asking before it sends a larger body.
    const std::string header = request.headerName + ": " + request.headerValue;
    for (const char* line : {header.c_str(), "Expect:"}) {
        curl_slist* list = curl_slist_append(headers_.get(), line);
        usable_ = usable_ && list != nullptr;
        if (!headers_)
            headers_.reset(list);
    }
    set(CURLOPT_HTTPHEADER, headers_.get());
}

long EasyHandle::number(CURLINFO info) const {
    long value = 0;
    curl_easy_getinfo(handle_.get(), info, &value);
    return value;
}

curl_off_t EasyHandle::size(CURLINFO info) const {
    curl_off_t value = 0;
    curl_easy_getinfo(handle_.get(), info, &value);
    return value;
}

std::string EasyHandle::url() const {
    const char* text = nullptr;
    curl_easy_getinfo(handle_.get(), CURLINFO_EFFECTIVE_URL, &text);
    return text == nullptr ? std::string() : text;
}

transfers::TransferFailure EasyHandle::failure(CURLcode result) const {
    // What had happened before.
    if (sentAgain_)
        result = CURLE_GOT_NOTHING;
    auto failure = curlFailure(result, number(CURLINFO_RESPONSE_CODE), number(CURLINFO_REDIRECT_COUNT));
    failure.detail = errorText_.front() != '\0' ? errorText_.data() : curl_easy_strerror(result);
    return failure;
}

} // namespace platform::curl
