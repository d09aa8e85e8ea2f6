#pragma once

#include "platform/Transfers.h"
#include "platform/transfers/MainThreadMessenger.h"

#include <cstdint>
#include <memory>

namespace platform::transfers {

// Tells a download's delegate its course. Data is told in steps of the whole, not as it comes, so that a fast transfer
// does not spend its time on waking the main thread. Used by one thread at a time.
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
    void tellData();

    MainThreadMessenger<DownloadDelegate> messenger_;
    std::uint64_t step_ = 0;
    std::uint64_t untold_ = 0;
};

} // namespace platform::transfers
