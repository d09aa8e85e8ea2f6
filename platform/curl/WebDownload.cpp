#include "platform/curl/WebDownload.h"

#include <algorithm>

namespace platform::curl {

namespace {

constexpr long bufferSize = 512L * 1024;

} // namespace

WebDownload::WebDownload(std::string url, const WebSettings& settings, std::unique_ptr<DestinationFile> file,
                         DownloadMessages messages)
    : WebTransfer(std::move(url), settings), file_(std::move(file)), messages_(std::move(messages)) {}

void WebDownload::configure(EasyHandle& handle) {
    handle.set(CURLOPT_BUFFERSIZE, bufferSize);
    handle.set(CURLOPT_FAILONERROR, 1L);
}

std::optional<Clock::time_point> WebDownload::advance() {
    const auto limit = WebTransfer::advance();
    if (!limit)
        return limit;
    return std::min(*limit, messages_.sendDue().value_or(*limit));
}

// Not at the headers: those of a redirect look the same, and an empty body comes without a piece.
void WebDownload::announce() {
    if (announced_)
        return;
    announced_ = true;
    messages_.response(handle().size(CURLINFO_CONTENT_LENGTH_DOWNLOAD_T));
}

std::optional<TransferFailure> WebDownload::receive(std::string_view bytes) {
    announce();
    if (auto failure = file_->write(bytes))
        return failure;
    messages_.data(bytes.size());
    return std::nullopt;
}

void WebDownload::succeeded() {
    announce();
    if (auto failure = file_->keep())
        return failed(*failure);
    messages_.finish();
}

void WebDownload::failed(const TransferFailure& failure) {
    file_.reset();
    messages_.fail(errorFor(failure));
}

} // namespace platform::curl
