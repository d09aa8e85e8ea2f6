#include "platform/transfers/DownloadSink.h"

namespace platform::transfers {

namespace {

constexpr long firstErrorStatus = 400;

} // namespace

std::optional<TransferFailure> DownloadSink::takeResponse(long status, std::int64_t expectedLength) {
    if (status >= firstErrorStatus)
        return statusFailure(status);
    messages_.response(expectedLength);
    return std::nullopt;
}

std::optional<TransferFailure> DownloadSink::take(std::string_view bytes) {
    if (auto failure = file_->write(bytes))
        return failure;
    messages_.data(bytes.size());
    return std::nullopt;
}

std::optional<TransferFailure> DownloadSink::succeed() {
    if (auto failure = file_->keep())
        return failure;
    messages_.finish();
    return std::nullopt;
}

void DownloadSink::fail(const foundation::Error& error) {
    file_.reset();
    messages_.fail(error);
}

} // namespace platform::transfers
