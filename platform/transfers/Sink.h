#pragma once

#include "foundation/Error.h"
#include "platform/transfers/TransferFailure.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform::transfers {

// Where a loader puts the answer to one web request. Used by one thread at a time. A sink that is destroyed before its
// end gives the transfer up: no further message, no partial file.
class Sink {
public:
    Sink() = default;
    virtual ~Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    // The final response, not a redirect's: its HTTP status and the announced length of its body as it is sent, -1 when
    // unknown. Once, before any of the body. False: stop loading; then end() follows, without a failure.
    bool respond(long status, std::int64_t expectedLength);

    // A further piece of the body. False as above.
    bool receive(std::string_view bytes);

    // The last call: the answer is complete or has been stopped, or loading failed. `url` is the address that the
    // request had got to.
    void end(const std::optional<TransferFailure>& failure, const std::string& url);

protected:
    virtual std::optional<TransferFailure> takeResponse(long status, std::int64_t expectedLength) = 0;
    virtual std::optional<TransferFailure> take(std::string_view bytes) = 0;
    // Whether more than what has come is of no interest.
    virtual bool hasEnough() const { return false; }

    // Exactly one of these, at the end. Success can still turn out to be a failure.
    virtual std::optional<TransferFailure> succeed() = 0;
    virtual void fail(const foundation::Error& error) = 0;

private:
    bool goOn(std::optional<TransferFailure> failure);

    std::optional<TransferFailure> failure_;
};

} // namespace platform::transfers
