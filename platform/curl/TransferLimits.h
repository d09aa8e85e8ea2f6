#pragma once

#include <chrono>
#include <cstddef>

namespace platform {

// How long transfers wait and how much they take.
struct TransferLimits {
    // Finding the host, connecting and agreeing on encryption.
    std::chrono::milliseconds connectTimeout{60'000};
    // Without one byte either way.
    std::chrono::milliseconds idleTimeout{60'000};
    long redirects = 20;
    // The largest answer that is kept in memory.
    std::size_t answerBytes = std::size_t{4} << 20;
    // The time between two data messages of a download.
    std::chrono::milliseconds progressInterval{16};
};

} // namespace platform
