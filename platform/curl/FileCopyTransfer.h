#pragma once

#include "platform/curl/Transfer.h"
#include "platform/transfers/FileCopy.h"

#include <memory>

namespace platform::curl {

// A copy of a local file, on the thread of the other transfers and between their turns.
class FileCopyTransfer final : public Transfer {
public:
    explicit FileCopyTransfer(std::unique_ptr<transfers::FileCopy> copy) : copy_(std::move(copy)) {}

    void begin(CURLM* multi) override;
    std::optional<Clock::time_point> advance() override;

private:
    std::unique_ptr<transfers::FileCopy> copy_;
};

} // namespace platform::curl
