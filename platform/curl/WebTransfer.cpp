#include "platform/curl/WebTransfer.h"

#include "platform/transfers/SourceURL.h"

#include <algorithm>
#include <strings.h>
#include <utility>

namespace platform::curl {

using transfers::RequestKind;

namespace {

constexpr long downloadBufferSize = 512L * 1024;
constexpr long firstRedirectStatus = 300;
constexpr long lastRedirectStatus = 399;
constexpr std::string_view locationName = "location:";

std::string_view trimmed(std::string_view text) {
    constexpr const char* blanks = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

} // namespace

void WebTransfer::leave() {
    if (multi_ != nullptr)
        curl_multi_remove_handle(multi_, handle_->get());
    multi_ = nullptr;
    handle_.reset();
}

WebTransfer& WebTransfer::of(CURL* handle) {
    WebTransfer* transfer = nullptr;
    curl_easy_getinfo(handle, CURLINFO_PRIVATE, &transfer);
    return *transfer;
}

void WebTransfer::begin(CURLM* multi) {
    handle_.emplace(request_.url.absoluteString(), *settings_);
    configure();
    if (curl_multi_add_handle(multi, handle_->get()) == CURLM_OK)
        multi_ = multi;
    else
        end(CURLE_FAILED_INIT);
}

void WebTransfer::configure() {
    handle_->set(CURLOPT_PRIVATE, this);
    handle_->set(CURLOPT_WRITEFUNCTION, &WebTransfer::bodyCame);
    handle_->set(CURLOPT_WRITEDATA, this);
    handle_->set(CURLOPT_HEADERFUNCTION, &WebTransfer::headerCame);
    handle_->set(CURLOPT_HEADERDATA, this);
    if (request_.kind == RequestKind::Fetch)
        handle_->set(CURLOPT_ACCEPT_ENCODING, "gzip");
    if (request_.kind == RequestKind::Download) {
        handle_->set(CURLOPT_BUFFERSIZE, downloadBufferSize);
        // The page that comes with an error is not waited for.
        handle_->set(CURLOPT_FAILONERROR, 1L);
    } else if (request_.kind == RequestKind::Post) {
        handle_->setPost(request_);
        handle_->sendAtMostOnce();
    }
}

std::optional<Clock::time_point> WebTransfer::advance() {
    if (over_)
        return std::nullopt;
    const auto limit = silenceEnd();
    if (Clock::now() < limit)
        return limit;
    end(CURLE_OPERATION_TIMEDOUT);
    return std::nullopt;
}

// libcurl's own limit looks at an average over seconds, and so ends a transfer that is slow but alive.
Clock::time_point WebTransfer::silenceEnd() {
    const curl_off_t transferred = handle_->size(CURLINFO_SIZE_DOWNLOAD_T) + handle_->size(CURLINFO_SIZE_UPLOAD_T) +
                                   handle_->number(CURLINFO_HEADER_SIZE) + handle_->number(CURLINFO_REQUEST_SIZE);
    if (transferred != transferred_) {
        transferred_ = transferred;
        lastTransfer_ = Clock::now();
    }
    return lastTransfer_ + settings_->limits.idleTimeout;
}

void WebTransfer::end(CURLcode result) {
    over_ = true;
    if (result == CURLE_OK)
        respond();
    const std::string reached = handle_->url();
    sink_->end(failure(result), reached.empty() ? request_.url.absoluteString() : reached);
}

std::optional<transfers::TransferFailure> WebTransfer::failure(CURLcode result) const {
    if (result == CURLE_OK || stopped_)
        return std::nullopt;
    if (refusal_)
        return refusal_;
    return headerBytes_ > settings_->limits.headerBytes ? transfers::lengthFailure() : handle_->failure(result);
}

// Not at the headers: those of a redirect look the same, and an empty body comes without a piece.
bool WebTransfer::respond() {
    if (!std::exchange(responded_, true))
        stopped_ =
            !sink_->respond(handle_->number(CURLINFO_RESPONSE_CODE), handle_->size(CURLINFO_CONTENT_LENGTH_DOWNLOAD_T));
    return !stopped_;
}

bool WebTransfer::receive(std::string_view bytes) {
    stopped_ = !respond() || !sink_->receive(bytes);
    return !stopped_;
}

bool WebTransfer::receiveHeader(std::string_view line) {
    headerBytes_ += line.size();
    if (headerBytes_ <= settings_->limits.headerBytes)
        return mayFollow(line);
    // Nobody reads the answer to a post.
    if (request_.kind == RequestKind::Post) {
        respond();
        stopped_ = true;
    }
    return false;
}

// libcurl guesses a host for an address without one.
bool WebTransfer::mayFollow(std::string_view headerLine) {
    const long status = handle_->number(CURLINFO_RESPONSE_CODE);
    const bool isRedirect = status >= firstRedirectStatus && status <= lastRedirectStatus;
    if (!isRedirect || headerLine.size() < locationName.size() ||
        ::strncasecmp(headerLine.data(), locationName.data(), locationName.size()) != 0)
        return true;
    refusal_ = transfers::redirectTargetFailure(std::string(trimmed(headerLine.substr(locationName.size()))));
    return !refusal_;
}

std::size_t WebTransfer::bodyCame(char* bytes, std::size_t /*unit*/, std::size_t count, void* self) {
    return static_cast<WebTransfer*>(self)->receive({bytes, count}) ? count : 0;
}

std::size_t WebTransfer::headerCame(char* bytes, std::size_t /*unit*/, std::size_t count, void* self) {
    return static_cast<WebTransfer*>(self)->receiveHeader({bytes, count}) ? count : 0;
}

} // namespace platform::curl
