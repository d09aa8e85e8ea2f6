#include "platform/transfers/FileCopy.h"

#include "platform/Transfers.h"

namespace platform::transfers {

namespace {

constexpr std::size_t pieceLength = std::size_t{1} << 20;

} // namespace

FileCopy::FileCopy(std::string url, SourceFile source, std::unique_ptr<DestinationFile> file, DownloadMessages messages)
    : url_(std::move(url)), source_(std::move(source)), file_(std::move(file)), messages_(std::move(messages)) {}

void FileCopy::begin() {
    messages_.response(static_cast<std::int64_t>(source_.length()));
}

bool FileCopy::copyPiece() {
    const auto piece = file_->copyFrom(source_, pieceLength);
    if (!piece) {
        fail(piece.error());
        return false;
    }
    copied_ += *piece;
    messages_.data(*piece);
    if (*piece == 0)
        finish();
    return *piece > 0;
}

void FileCopy::finish() {
    if (copied_ < source_.length())
        return fail({URLErrorCode::networkConnectionLost, "The file became shorter while it was copied.", {}});
    if (auto failure = file_->keep())
        return fail(*failure);
    messages_.finish();
}

void FileCopy::fail(const TransferFailure& failure) {
    file_.reset();
    messages_.fail(errorOf(failure, url_));
}

} // namespace platform::transfers
