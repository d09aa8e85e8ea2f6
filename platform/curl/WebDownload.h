#pragma once

#include "platform/curl/DestinationFile.h"
#include "platform/curl/DownloadMessages.h"
#include "platform/curl/WebTransfer.h"

#include <memory>

namespace platform::curl {

// A download from the web, written to its file as it arrives.
class WebDownload final : public WebTransfer {
public:
    WebDownload(std::string url, const WebSettings& settings, std::unique_ptr<DestinationFile> file,
                DownloadMessages messages);

    std::optional<Clock::time_point> advance() override;

private:
    void configure(EasyHandle& handle) override;
    std::optional<TransferFailure> receive(std::string_view bytes) override;
    void succeeded() override;
    void failed(const TransferFailure& failure) override;
    void announce();

    std::unique_ptr<DestinationFile> file_;
    DownloadMessages messages_;
    bool announced_ = false;
};

} // namespace platform::curl
