#pragma once

#include "platform/transfers/LoaderTransfers.h"

namespace platform {

// Web transfers over libcurl. Certificates are checked against the system's and those in the file that SSL_CERT_FILE
// names when the object is made; proxies come from the environment. The thread that does the work, "transfers", starts
// with the first transfer.
//
// When it is destroyed it gives up what still runs: no further message, nothing for a waiting read, no partial file; it
// ends within milliseconds. A program that is ending need not destroy it.
class CurlTransfers final : public transfers::LoaderTransfers {
public:
    explicit CurlTransfers(Threads& threads, const transfers::TransferLimits& limits = {});
};

} // namespace platform
