#include "platform/transfers/PostSink.h"

namespace platform::transfers {

std::optional<TransferFailure> PostSink::takeResponse(long /*status*/, std::int64_t /*expectedLength*/) {
    messenger_.send([](ConnectionDelegate& d) { d.connectionDidReceiveResponse(); });
    return std::nullopt;
}

std::optional<TransferFailure> PostSink::take(std::string_view bytes) {
    std::string piece(bytes.substr(0, left_));
    left_ -= piece.size();
    messenger_.send([piece = std::move(piece)](ConnectionDelegate& d) { d.connectionDidReceiveData(piece); });
    return std::nullopt;
}

std::optional<TransferFailure> PostSink::succeed() {
    messenger_.sendLast([](ConnectionDelegate& d) { d.connectionDidFinishLoading(); });
    return std::nullopt;
}

void PostSink::fail(const foundation::Error& error) {
    messenger_.sendLast([error](ConnectionDelegate& d) { d.connectionDidFailWithError(error); });
}

} // namespace platform::transfers
