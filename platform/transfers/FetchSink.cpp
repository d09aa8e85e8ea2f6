#include "platform/transfers/FetchSink.h"

#include <utility>

namespace platform::transfers {

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

std::optional<TransferFailure> FetchSink::takeResponse(long /*status*/, std::int64_t /*expectedLength*/) {
    return std::nullopt;
}

std::optional<TransferFailure> FetchSink::take(std::string_view bytes) {
    if (bytes.size() > limit_ - body_.size())
        return lengthFailure();
    body_ += bytes;
    return std::nullopt;
}

std::optional<TransferFailure> FetchSink::succeed() {
    result_->set(std::move(body_));
    return std::nullopt;
}

void FetchSink::fail(const foundation::Error& /*error*/) {
    result_->set(std::nullopt);
}

} // namespace platform::transfers
