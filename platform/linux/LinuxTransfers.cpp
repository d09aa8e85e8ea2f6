#include "platform/linux/LinuxTransfers.h"

#include <utility>

#include <dlfcn.h>

namespace platform {

namespace {

using MakeTransfers = Transfers* (*)(Threads&);

foundation::Error unavailable() {
    return foundation::Error::withDescription(foundation::urlErrorDomain, URLErrorCode::unknown,
                                              "The library for web transfers is missing.");
}

} // namespace

std::optional<std::string> LinuxTransfers::dataWithContentsOfURL(const foundation::URL& url) {
    Transfers* transfers = loaded();
    return transfers != nullptr ? transfers->dataWithContentsOfURL(url) : std::nullopt;
}

std::shared_ptr<Download> LinuxTransfers::startDownload(const foundation::URL& url,
                                                        std::shared_ptr<DownloadDelegate> delegate) {
    Transfers* transfers = loaded();
    return transfers != nullptr ? transfers->startDownload(url, std::move(delegate)) : nullptr;
}

bool LinuxTransfers::startPost(const PostRequest& request, std::shared_ptr<ConnectionDelegate> delegate) {
    Transfers* transfers = loaded();
    if (transfers != nullptr)
        return transfers->startPost(request, std::move(delegate));
    threads_.performOnMain([delegate = std::move(delegate)] { delegate->connectionDidFailWithError(unavailable()); });
    return true;
}

Transfers* LinuxTransfers::loaded() {
    std::call_once(once_, [this] { transfers_ = load(); });
    return transfers_;
}

Transfers* LinuxTransfers::load() {
    const std::string path = bundles_.mainBundlePath() + "/Contents/PlugIns/Transfers.so";
    void* library = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    const auto make =
        reinterpret_cast<MakeTransfers>(library == nullptr ? nullptr : ::dlsym(library, "TXMakeTransfers"));
    if (make != nullptr)
        return make(threads_);
    const char* reason = ::dlerror();
    console_.log(std::string("No web transfers: ") + (reason != nullptr ? reason : path));
    return nullptr;
}

} // namespace platform
