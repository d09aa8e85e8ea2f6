#include "platform/curl/WebTransfer.h"

namespace platform::curl {

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
    handle_.emplace(url_, *settings_);
    handle_->set(CURLOPT_PRIVATE, this);
    handle_->set(CURLOPT_WRITEFUNCTION, &WebTransfer::receiveBody);
    handle_->set(CURLOPT_WRITEDATA, this);
    configure(*handle_);
    if (curl_multi_add_handle(multi, handle_->get()) == CURLM_OK) {
        multi_ = multi;
    } else {
        end(CURLE_FAILED_INIT);
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
    return lastTransfer_ + limits().idleTimeout;
}

void WebTransfer::end(CURLcode result) {
    over_ = true;
    if (result == CURLE_OK) {
        succeeded();
    } else {
        failed(failure_.value_or(handle_->failure(result)));
    }
}

foundation::Error WebTransfer::errorFor(const TransferFailure& failure) const {
    const std::string reached = handle_->url();
    return errorOf(failure, reached.empty() ? url_ : reached);
}

std::size_t WebTransfer::receiveBody(char* bytes, std::size_t /*unit*/, std::size_t count, void* self) {
    auto& transfer = *static_cast<WebTransfer*>(self);
    transfer.failure_ = transfer.receive({bytes, count});
    return transfer.failure_ ? 0 : count;
}

} // namespace platform::curl
