#pragma once

#include "platform/Threads.h"
#include "platform/Transfers.h"
#include "platform/transfers/Loader.h"
#include "platform/transfers/TransferLimits.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace platform::transfers {

// Transfers from the web by the system's loader, and copies of local files.
class LoaderTransfers : public Transfers {
public:
    // `threads` must outlive this object; only performOnMain is used. With this object its downloads that have no
    // destination yet are given up; the others are the loader's.
    LoaderTransfers(Threads& threads, const TransferLimits& limits, std::shared_ptr<Loader> loader)
        : threads_(threads), limits_(limits), loader_(std::move(loader)) {}

    std::optional<std::string> dataWithContentsOfURL(const foundation::URL& url) override;
    std::shared_ptr<Download> startDownload(const foundation::URL& url,
                                            std::shared_ptr<DownloadDelegate> delegate) override;
    bool startPost(const PostRequest& request, std::shared_ptr<ConnectionDelegate> delegate) override;

private:
    Threads& threads_;
    const TransferLimits limits_;
    const std::shared_ptr<Loader> loader_;
};

} // namespace platform::transfers
