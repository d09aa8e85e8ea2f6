#pragma once

#include "platform/transfers/DestinationFile.h"
#include "platform/transfers/DownloadMessages.h"
#include "platform/transfers/Sink.h"

#include <memory>

namespace platform::transfers {

// Writes a download to its file as it arrives, and tells its delegate. A status of 400 or more is a failure.
class DownloadSink final : public Sink {
public:
    DownloadSink(std::unique_ptr<DestinationFile> file, DownloadMessages messages)
        : file_(std::move(file)), messages_(std::move(messages)) {}

private:
    std::optional<TransferFailure> takeResponse(long status, std::int64_t expectedLength) override;
    std::optional<TransferFailure> take(std::string_view bytes) override;
    std::optional<TransferFailure> succeed() override;
    void fail(const foundation::Error& error) override;

    std::unique_ptr<DestinationFile> file_;
    DownloadMessages messages_;
};

} // namespace platform::transfers
