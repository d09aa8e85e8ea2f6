#include "platform/curl/FileCopyTransfer.h"

namespace platform::curl {

void FileCopyTransfer::begin(CURLM* /*multi*/) {
    copy_->begin();
}

std::optional<Clock::time_point> FileCopyTransfer::advance() {
    return copy_->copyPiece() ? std::optional(Clock::now()) : std::nullopt;
}

} // namespace platform::curl
