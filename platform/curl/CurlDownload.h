#pragma once

#include "platform/Transfers.h"
#include "platform/curl/DownloadMessages.h"
#include "platform/curl/TransferContext.h"

#include <memory>
#include <optional>
#include <string>

namespace platform::curl {

// A download until it has a destination; then the transfer loop has it. Main thread.
class CurlDownload final : public Download {
public:
    CurlDownload(const std::shared_ptr<TransferContext>& context, foundation::URL url,
                 std::shared_ptr<DownloadDelegate> delegate);

    void setDestination(const std::optional<std::string>& path, bool allowOverwrite) override;

    // Fails the download if nobody has set a destination.
    void requireDestination();

private:
    void begin(TransferContext& context, const std::string& path, bool allowOverwrite);
    void beginCopy(TransferContext& context, const std::string& path, bool allowOverwrite);
    void fail(const TransferFailure& failure);

    std::weak_ptr<TransferContext> context_;
    foundation::URL url_;
    // Until the download has begun or failed.
    std::optional<DownloadMessages> messages_;
};

} // namespace platform::curl
