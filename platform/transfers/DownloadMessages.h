#pragma once

#include "platform/Transfers.h"
#include "platform/transfers/MainThreadMessenger.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace platform::transfers {

// Tells a download's delegate its course. At most one message about data is on its way, and tells of everything that
// has come until it arrives, so that a fast transfer does not flood the main thread. Used by one thread at a time.
class DownloadMessages {
public:
    DownloadMessages(Threads& threads, std::shared_ptr<DownloadDelegate> delegate)
        : messenger_(threads, std::move(delegate)) {}

    void response(std::int64_t expectedLength);
    void data(std::uint64_t length);

    // The last message, after all data.
    void finish();
    void fail(const foundation::Error& error);

private:
    MainThreadMessenger<DownloadDelegate> messenger_;
    // What the message on its way will tell; 0 when there is none.
    std::shared_ptr<std::atomic<std::uint64_t>> untold_ = std::make_shared<std::atomic<std::uint64_t>>(0);
};

} // namespace platform::transfers
