#include "platform/transfers/DownloadMessages.h"

#include <utility>

namespace platform::transfers {

namespace {

// Finer than a bar on a screen can show.
constexpr std::uint64_t stepsOfWhole = 256;
constexpr std::uint64_t stepOfUnknown = 256UL * 1024;

} // namespace

void DownloadMessages::response(std::int64_t expectedLength) {
    step_ = expectedLength < 0 ? stepOfUnknown : static_cast<std::uint64_t>(expectedLength) / stepsOfWhole;
    messenger_.send([expectedLength](DownloadDelegate& d) { d.downloadDidReceiveResponse(expectedLength); });
}

void DownloadMessages::data(std::uint64_t length) {
    untold_ += length;
    if (untold_ >= step_)
        tellData();
}

void DownloadMessages::tellData() {
    if (const std::uint64_t length = std::exchange(untold_, 0))
        messenger_.send([length](DownloadDelegate& d) { d.downloadDidReceiveDataOfLength(length); });
}

void DownloadMessages::finish() {
    tellData();
    messenger_.sendLast([](DownloadDelegate& d) { d.downloadDidFinish(); });
}

void DownloadMessages::fail(const foundation::Error& error) {
    tellData();
    messenger_.sendLast([error](DownloadDelegate& d) { d.downloadDidFailWithError(error); });
}

} // namespace platform::transfers
