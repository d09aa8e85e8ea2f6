#include "platform/curl/DownloadMessages.h"

namespace platform::curl {

DownloadMessages::DownloadMessages(Threads& threads, std::shared_ptr<DownloadDelegate> delegate,
                                   std::chrono::milliseconds interval)
    : messenger_(threads, std::move(delegate)), interval_(interval) {}

void DownloadMessages::response(std::int64_t expectedLength) {
    messenger_.send([expectedLength](DownloadDelegate& d) { d.downloadDidReceiveResponse(expectedLength); });
}

void DownloadMessages::data(std::uint64_t length) {
    gathered_ += length;
    sendDue();
}

std::optional<Clock::time_point> DownloadMessages::sendDue() {
    if (gathered_ == 0)
        return std::nullopt;
    const auto now = Clock::now();
    if (now < due_)
        return due_;
    due_ = now + interval_;
    sendGathered();
    return std::nullopt;
}

void DownloadMessages::sendGathered() {
    if (gathered_ == 0)
        return;
    messenger_.send([length = gathered_](DownloadDelegate& d) { d.downloadDidReceiveDataOfLength(length); });
    gathered_ = 0;
}

void DownloadMessages::finish() {
    sendGathered();
    messenger_.sendLast([](DownloadDelegate& d) { d.downloadDidFinish(); });
}

void DownloadMessages::fail(const foundation::Error& error) {
    sendGathered();
    messenger_.sendLast([error](DownloadDelegate& d) { d.downloadDidFailWithError(error); });
}

} // namespace platform::curl
