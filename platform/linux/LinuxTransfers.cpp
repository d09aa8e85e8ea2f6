#include "platform/linux/LinuxTransfers.h"

#include <utility>

#include <dlfcn.h>

namespace platform {

namespace {

using MakeTransfers = Transfers* (*)(Threads&);

foundation::Error unavailable() {
    return foundation::Error::withDescription(foundation::urlErrorDomain, URLErrorCode::unknown,
                                              "Web transfers are not available.");
}

// A download that is asked for while the library is being loaded: keeps the destination until then.
class AwaitedDownload final : public Download {
public:
    void setDestination(const std::optional<std::string>& path, bool allowOverwrite) override {
        path_ = path;
        allowOverwrite_ = allowOverwrite;
    }

    void begin(Transfers* transfers, const foundation::URL& url, const std::shared_ptr<DownloadDelegate>& delegate) {
        const auto download = transfers != nullptr ? transfers->startDownload(url, delegate) : nullptr;
        if (download)
            download->setDestination(path_, allowOverwrite_);
        else
            delegate->downloadDidFailWithError(unavailable());
    }

private:
    std::optional<std::string> path_;
    bool allowOverwrite_ = false;
};

} // namespace

std::optional<std::string> LinuxTransfers::dataWithContentsOfURL(const foundation::URL& url) {
    Transfers* transfers = loaded();
    return transfers != nullptr ? transfers->dataWithContentsOfURL(url) : std::nullopt;
}

std::shared_ptr<Download> LinuxTransfers::startDownload(const foundation::URL& url,
                                                        std::shared_ptr<DownloadDelegate> delegate) {
    if (ready_)
        return transfers_ != nullptr ? transfers_->startDownload(url, std::move(delegate)) : nullptr;
    auto download = std::make_shared<AwaitedDownload>();
    whenLoaded([download, url, delegate = std::move(delegate)](Transfers* transfers) {
        download->begin(transfers, url, delegate);
    });
    return download;
}

bool LinuxTransfers::startPost(const PostRequest& request, std::shared_ptr<ConnectionDelegate> delegate) {
    if (ready_ && transfers_ != nullptr)
        return transfers_->startPost(request, std::move(delegate));
    whenLoaded([this, request, delegate = std::move(delegate)](Transfers* transfers) {
        if (transfers == nullptr || !transfers->startPost(request, delegate))
            threads_.performOnMain([delegate] { delegate->connectionDidFailWithError(unavailable()); });
    });
    return true;
}

void LinuxTransfers::whenLoaded(Use use) {
    if (ready_)
        return use(transfers_);
    waiting_.push_back(std::move(use));
    if (waiting_.size() > 1)
        return;
    threads_.performInBackground([this] {
        loaded();
        threads_.performOnMain([this] { runWaiting(); });
    });
}

void LinuxTransfers::runWaiting() {
    ready_ = true;
    for (const auto& use : std::exchange(waiting_, {}))
        use(transfers_);
}

Transfers* LinuxTransfers::loaded() {
    std::call_once(once_, [this] { transfers_ = load(); });
    return transfers_;
}

Transfers* LinuxTransfers::load() {
    void* library = ::dlopen(library_.c_str(), RTLD_LAZY | RTLD_LOCAL);
    const auto make =
        reinterpret_cast<MakeTransfers>(library == nullptr ? nullptr : ::dlsym(library, "TXMakeTransfers"));
    if (make != nullptr)
        return make(threads_);
    const char* reason = ::dlerror();
    console_.log(std::string("No web transfers: ") + (reason != nullptr ? reason : library_));
    return nullptr;
}

} // namespace platform
