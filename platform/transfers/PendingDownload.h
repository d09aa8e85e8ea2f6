#pragma once

#include "platform/Transfers.h"
#include "platform/transfers/DownloadMessages.h"
#include "platform/transfers/Loader.h"

#include <memory>
#include <optional>
#include <string>

namespace platform::transfers {

// A download until it has a destination; then the loader has it. Main thread.
class PendingDownload final : public Download {
public:
    PendingDownload(const std::shared_ptr<Loader>& loader, foundation::URL url, DownloadMessages messages)
        : loader_(loader), url_(std::move(url)), messages_(std::move(messages)) {}

    void setDestination(const std::optional<std::string>& path, bool allowOverwrite) override;

    // Fails the download if nobody has set a destination.
    void requireDestination() { setDestination(std::nullopt, false); }

private:
    std::optional<TransferFailure> begin(Loader& loader, const std::string& path, bool allowOverwrite);
    std::optional<TransferFailure> beginCopy(Loader& loader, const std::string& path, bool allowOverwrite);

    std::weak_ptr<Loader> loader_;
    foundation::URL url_;
    // Until the download has begun or failed.
    std::optional<DownloadMessages> messages_;
};

} // namespace platform::transfers
