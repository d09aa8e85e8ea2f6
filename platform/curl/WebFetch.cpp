#include "platform/curl/WebFetch.h"

#include <utility>

namespace platform::curl {

void FetchedBody::set(std::optional<std::string> body) {
    const std::lock_guard lock(mutex_);
    if (std::exchange(set_, true))
        return;
    body_ = std::move(body);
    changed_.notify_all();
}

std::optional<std::string> FetchedBody::wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return set_; });
    return std::move(body_);
}

WebFetch::WebFetch(std::string url, const WebSettings& settings, std::shared_ptr<FetchedBody> result)
    : WebTransfer(std::move(url), settings), result_(std::move(result)) {}

WebFetch::~WebFetch() {
    result_->set(std::nullopt);
}

std::optional<TransferFailure> WebFetch::receive(std::string_view bytes) {
    if (bytes.size() > limits().answerBytes - body_.size())
        return TransferFailure{URLErrorCode::dataLengthExceedsMaximum, "The server's answer is too long.", {}};
    body_ += bytes;
    return std::nullopt;
}

void WebFetch::succeeded() {
    result_->set(std::move(body_));
}

void WebFetch::failed(const TransferFailure& /*failure*/) {
    result_->set(std::nullopt);
}

} // namespace platform::curl
