#pragma once

#include "platform/curl/DestinationFile.h"
#include "platform/curl/DownloadMessages.h"
#include "platform/curl/Transfer.h"

#include <cstdint>
#include <memory>
#include <string>

namespace platform::curl {

// A download from a local file: a copy in pieces, between which other transfers have their turn.
class FileCopyDownload final : public Transfer {
public:
    FileCopyDownload(std::string url, SourceFile source, std::unique_ptr<DestinationFile> file,
                     DownloadMessages messages);

    void begin(CURLM* multi) override;
    std::optional<Clock::time_point> advance() override;

private:
    void finish();
    void fail(const TransferFailure& failure);

    std::string url_;
    SourceFile source_;
    std::unique_ptr<DestinationFile> file_;
    DownloadMessages messages_;
    std::uint64_t copied_ = 0;
};

} // namespace platform::curl
