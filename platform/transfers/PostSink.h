#pragma once

#include "platform/Transfers.h"
#include "platform/transfers/MainThreadMessenger.h"
#include "platform/transfers/Sink.h"

#include <cstddef>

namespace platform::transfers {

// Hands the answer to a request on, piece by piece. An answer that is longer than the limits is not read to its end,
// and the request has succeeded all the same.
class PostSink final : public Sink {
public:
    PostSink(std::size_t limit, MainThreadMessenger<ConnectionDelegate> messenger)
        : left_(limit), messenger_(std::move(messenger)) {}

private:
    std::optional<TransferFailure> takeResponse(long status, std::int64_t expectedLength) override;
    std::optional<TransferFailure> take(std::string_view bytes) override;
    bool hasEnough() const override { return left_ == 0; }
    std::optional<TransferFailure> succeed() override;
    void fail(const foundation::Error& error) override;

    std::size_t left_;
    MainThreadMessenger<ConnectionDelegate> messenger_;
};

} // namespace platform::transfers
