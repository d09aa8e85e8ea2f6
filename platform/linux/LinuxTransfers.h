#pragma once

#include "platform/Bundles.h"
#include "platform/ProcessInfo.h"
#include "platform/Threads.h"
#include "platform/Transfers.h"

#include <mutex>

namespace platform {

// Web transfers from a library in the program's bundle. It is loaded when the first transfer is asked for: what it
// brings along would hold up the window. Without it every transfer fails, and the console tells why.
class LinuxTransfers : public Transfers {
public:
    // All are borrowed for the object's life.
    LinuxTransfers(Bundles& bundles, Threads& threads, Console& console)
        : bundles_(bundles), threads_(threads), console_(console) {}

    std::optional<std::string> dataWithContentsOfURL(const foundation::URL& url) override;
    std::shared_ptr<Download> startDownload(const foundation::URL& url,
                                            std::shared_ptr<DownloadDelegate> delegate) override;
    bool startPost(const PostRequest& request, std::shared_ptr<ConnectionDelegate> delegate) override;

private:
    Transfers* loaded();
    Transfers* load();

    Bundles& bundles_;
    Threads& threads_;
    Console& console_;
    std::once_flag once_;
    // Never destroyed, nor is the library unloaded: its threads end with the process.
    Transfers* transfers_ = nullptr;
};

} // namespace platform
