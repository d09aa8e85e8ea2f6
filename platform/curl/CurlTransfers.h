#pragma once

#include "platform/Threads.h"
#include "platform/Transfers.h"
#include "platform/curl/TransferLimits.h"

#include <memory>

namespace platform {

namespace curl {
struct TransferContext;
}

// Web transfers over libcurl. Certificates are checked against the system's and those in the file that SSL_CERT_FILE
// names when the object is made; proxies come from the environment. The thread that does the work, "transfers", starts
// with the first transfer.
class CurlTransfers final : public Transfers {
public:
    // `threads` must outlive this object; only performOnMain is used.
    explicit CurlTransfers(Threads& threads, const TransferLimits& limits = {});

    // Gives up what still runs: no further message, nothing for a waiting read, no partial file. Ends within
    // milliseconds. A program that is ending need not destroy the object.
    ~CurlTransfers() override;

    CurlTransfers(const CurlTransfers&) = delete;
    CurlTransfers& operator=(const CurlTransfers&) = delete;

    std::optional<std::string> dataWithContentsOfURL(const foundation::URL& url) override;
    std::shared_ptr<Download> startDownload(const foundation::URL& url,
                                            std::shared_ptr<DownloadDelegate> delegate) override;
    bool startPost(const PostRequest& request, std::shared_ptr<ConnectionDelegate> delegate) override;

private:
    std::shared_ptr<curl::TransferContext> context_;
};

} // namespace platform
