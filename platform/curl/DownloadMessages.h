#pragma once

#include "platform/Transfers.h"
#include "platform/curl/MainThreadMessenger.h"
#include "platform/curl/Transfer.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace platform::curl {

// Tells a download's delegate its course. Lengths of data are gathered, so that a fast transfer does not flood the main
// thread. Used by one thread at a time.
class DownloadMessages {
public:
    DownloadMessages(Threads& threads, std::shared_ptr<DownloadDelegate> delegate, std::chrono::milliseconds interval);

    void response(std::int64_t expectedLength);
    void data(std::uint64_t length);

    // Sends what has been gathered if it is time to. When it will be; nothing when nothing waits.
    std::optional<Clock::time_point> sendDue();

    // The last message, after all data.
    void finish();
    void fail(const foundation::Error& error);

private:
    void sendGathered();

    MainThreadMessenger<DownloadDelegate> messenger_;
    std::chrono::milliseconds interval_;
    std::uint64_t gathered_ = 0;
    Clock::time_point due_;
};

} // namespace platform::curl
