#pragma once

#include <chrono>
#include <curl/curl.h>
#include <optional>

namespace platform::curl {

using Clock = std::chrono::steady_clock;

// A piece of work that the transfer loop drives. Made on any thread, then used by the loop's thread alone.
class Transfer {
public:
    virtual ~Transfer() = default;

    // Begins; a web transfer joins the handle that drives all of them.
    virtual void begin(CURLM* /*multi*/) {}

    // Does what is due. When to call again at the latest; nothing when the transfer is over.
    virtual std::optional<Clock::time_point> advance() = 0;

    // Lets go of what is tied to the loop's thread, because that ends. Only destruction may follow, on any thread.
    virtual void abandon() {}
};

} // namespace platform::curl
