#pragma once

#include "platform/ProcessInfo.h"
#include "platform/Threads.h"
#include "platform/Transfers.h"

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace platform {

// Web transfers from a library that comes with the program. It is loaded in the background when the first transfer is
// asked for: what it brings along would hold up the window. Without it every transfer fails, and the console tells why.
class LinuxTransfers : public Transfers {
public:
    // `library` is its path. The others are borrowed until the program ends, as this object is by the thread that
    // loads.
    LinuxTransfers(std::string library, Threads& threads, Console& console)
        : library_(std::move(library)), threads_(threads), console_(console) {}

    std::optional<std::string> dataWithContentsOfURL(const foundation::URL& url) override;
    std::shared_ptr<Download> startDownload(const foundation::URL& url,
                                            std::shared_ptr<DownloadDelegate> delegate) override;
    bool startPost(const PostRequest& request, std::shared_ptr<ConnectionDelegate> delegate) override;

private:
    // Takes what the library gives, null where it is missing. Main thread.
    using Use = std::function<void(Transfers*)>;

    // Calls `use` at once where the library is there already, or when it is. Main thread.
    void whenLoaded(Use use);
    void runWaiting();
    // Loads the library unless it is there. Any thread; blocks.
    Transfers* loaded();
    Transfers* load();

    const std::string library_;
    Threads& threads_;
    Console& console_;
    std::once_flag once_;
    // Never destroyed, nor is the library unloaded: its threads end with the process.
    Transfers* transfers_ = nullptr;
    // Both for the main thread, which must not wait for `once_`.
    bool ready_ = false;
    std::vector<Use> waiting_;
};

} // namespace platform
