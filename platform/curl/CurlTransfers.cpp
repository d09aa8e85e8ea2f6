#include "platform/curl/CurlTransfers.h"

#include "platform/curl/CurlDownload.h"
#include "platform/curl/CurlLibrary.h"
#include "platform/curl/SourceFile.h"
#include "platform/curl/SourceURL.h"
#include "platform/curl/TransferContext.h"
#include "platform/curl/WebFetch.h"
#include "platform/curl/WebPost.h"

#include <utility>

namespace platform {

using namespace curl;

namespace {

std::optional<std::string> contentsOfFile(const foundation::URL& url, std::size_t limit) {
    const auto path = localPath(url);
    if (!path)
        return std::nullopt;
    const auto file = SourceFile::open(*path);
    if (std::holds_alternative<TransferFailure>(file))
        return std::nullopt;
    return std::get<SourceFile>(file).readAll(limit);
}

} // namespace

CurlTransfers::CurlTransfers(Threads& threads, const TransferLimits& limits)
    : context_(new TransferContext{threads, {limits, TrustedCertificates::ofSystemAndEnvironment()}, nullptr, {}}) {
    // Takes its time the first time, and should not be waited for by whoever asks for the first transfer.
    CurlLibrary::initialize();
}

CurlTransfers::~CurlTransfers() {
    // Then the thread may be anywhere, and the process takes everything with it.
    if (CurlLibrary::isEnding())
        context_->self = context_;
}

std::optional<std::string> CurlTransfers::dataWithContentsOfURL(const foundation::URL& url) {
    const SourceKind kind = kindOf(url);
    if (kind == SourceKind::File)
        return contentsOfFile(url, context_->settings.limits.answerBytes);
    if (kind == SourceKind::Unsupported || !context_->loop.start())
        return std::nullopt;
    const auto body = std::make_shared<FetchedBody>();
    context_->loop.add(std::make_unique<WebFetch>(url.absoluteString(), context_->settings, body));
    return body->wait();
}

std::shared_ptr<Download> CurlTransfers::startDownload(const foundation::URL& url,
                                                       std::shared_ptr<DownloadDelegate> delegate) {
    if (!context_->loop.start())
        return nullptr;
    auto download = std::make_shared<CurlDownload>(context_, url, std::move(delegate));
    context_->threads.performOnMain([download] { download->requireDestination(); });
    return download;
}

bool CurlTransfers::startPost(const PostRequest& request, std::shared_ptr<ConnectionDelegate> delegate) {
    if (!context_->loop.start())
        return false;
    MainThreadMessenger<ConnectionDelegate> messenger(context_->threads, std::move(delegate));
    if (kindOf(request.url) != SourceKind::Web) {
        const auto error = errorOf({URLErrorCode::unsupportedURL, "Addresses of this kind are not supported.", {}},
                                   request.url.absoluteString());
        messenger.sendLast([error](ConnectionDelegate& d) { d.connectionDidFailWithError(error); });
        return true;
    }
    context_->loop.add(std::make_unique<WebPost>(request, context_->settings, std::move(messenger)));
    return true;
}

} // namespace platform
