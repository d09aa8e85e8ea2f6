#include "platform/transfers/LoaderTransfers.h"

#include "platform/transfers/FetchSink.h"
#include "platform/transfers/PendingDownload.h"
#include "platform/transfers/PostSink.h"
#include "platform/transfers/SourceFile.h"
#include "platform/transfers/SourceURL.h"

namespace platform::transfers {

namespace {

std::optional<std::string> contentsOfFile(const foundation::URL& url, std::size_t limit) {
    const auto path = localPath(url);
    if (!path)
        return std::nullopt;
    const auto file = SourceFile::open(*path);
    return file ? file->readAll(limit) : std::nullopt;
}

} // namespace

std::optional<std::string> LoaderTransfers::dataWithContentsOfURL(const foundation::URL& url) {
    if (isFileURL(url))
        return contentsOfFile(url, limits_.answerBytes);
    if (webURLFailure(url) || !loader_->start())
        return std::nullopt;
    const auto body = std::make_shared<FetchedBody>();
    loader_->load({RequestKind::Fetch, url, {}, {}, {}}, std::make_unique<FetchSink>(limits_.answerBytes, body));
    return body->wait();
}

std::shared_ptr<Download> LoaderTransfers::startDownload(const foundation::URL& url,
                                                         std::shared_ptr<DownloadDelegate> delegate) {
    auto download = std::make_shared<PendingDownload>(loader_, url, DownloadMessages(threads_, std::move(delegate)));
    threads_.performOnMain([download] { download->requireDestination(); });
    return download;
}

bool LoaderTransfers::startPost(const PostRequest& request, std::shared_ptr<ConnectionDelegate> delegate) {
    auto sink = std::make_unique<PostSink>(limits_.answerBytes,
                                           MainThreadMessenger<ConnectionDelegate>(threads_, std::move(delegate)));
    if (const auto failure = webURLFailure(request.url))
        sink->end(failure, request.url.absoluteString());
    else if (!loader_->start())
        sink->end(startFailure(), request.url.absoluteString());
    else
        loader_->load({RequestKind::Post, request.url, request.headerName, request.headerValue, request.body},
                      std::move(sink));
    return true;
}

} // namespace platform::transfers
