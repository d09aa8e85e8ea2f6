#pragma once

#include <chrono>
#include <cstddef>

namespace platform::transfers {

// How long transfers wait and how much they take.
struct TransferLimits {
    // Finding the host, connecting and agreeing on encryption.
    std::chrono::milliseconds connectTimeout{60'000};
    // Without one byte either way.
    std::chrono::milliseconds idleTimeout{60'000};
    long redirects = 20;
    // Deliberate: the largest answer that is kept in memory, decoded; one beyond it is no answer.
    std::size_t answerBytes = std::size_t{4} << 20;
    // Of all header lines of one transfer, those of redirects and behind the body too.
    std::size_t headerBytes = std::size_t{256} << 10;
};

} // namespace platform::transfers
