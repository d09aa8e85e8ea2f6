#include "platform/transfers/DownloadMessages.h"

namespace platform::transfers {

void DownloadMessages::response(std::int64_t expectedLength) {
    messenger_.send([expectedLength](DownloadDelegate& d) { d.downloadDidReceiveResponse(expectedLength); });
}

void DownloadMessages::data(std::uint64_t length) {
    if (length > 0 && untold_->fetch_add(length) == 0)
        messenger_.send(
            [untold = untold_](DownloadDelegate& d) { d.downloadDidReceiveDataOfLength(untold->exchange(0)); });
}

void DownloadMessages::finish() {
    messenger_.sendLast([](DownloadDelegate& d) { d.downloadDidFinish(); });
}

void DownloadMessages::fail(const foundation::Error& error) {
    messenger_.sendLast([error](DownloadDelegate& d) { d.downloadDidFailWithError(error); });
}

} // namespace platform::transfers
