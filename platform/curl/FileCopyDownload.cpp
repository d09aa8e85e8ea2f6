#include "platform/curl/FileCopyDownload.h"

#include "platform/Transfers.h"

namespace platform::curl {

namespace {

// A millisecond of work or so.
constexpr std::size_t pieceLength = std::size_t{1} << 20;

} // namespace

FileCopyDownload::FileCopyDownload(std::string url, SourceFile source, std::unique_ptr<DestinationFile> file,
                                   DownloadMessages messages)
    : url_(std::move(url)), source_(std::move(source)), file_(std::move(file)), messages_(std::move(messages)) {}

void FileCopyDownload::begin(CURLM* /*multi*/) {
    messages_.response(static_cast<std::int64_t>(source_.length()));
}

std::optional<Clock::time_point> FileCopyDownload::advance() {
    const auto piece = file_->copyFrom(source_, pieceLength);
    if (const auto* failure = std::get_if<TransferFailure>(&piece)) {
        fail(*failure);
        return std::nullopt;
    }
    const auto length = std::get<std::uint64_t>(piece);
    if (length == 0) {
        finish();
        return std::nullopt;
    }
    copied_ += length;
    messages_.data(length);
    return Clock::now();
}

void FileCopyDownload::finish() {
    if (copied_ < source_.length())
        return fail({URLErrorCode::networkConnectionLost, "The file became shorter while it was copied.", {}});
    if (auto failure = file_->keep())
        return fail(*failure);
    messages_.finish();
}

void FileCopyDownload::fail(const TransferFailure& failure) {
    file_.reset();
    messages_.fail(errorOf(failure, url_));
}

} // namespace platform::curl
