#include "platform/transfers/Sink.h"

#include <utility>

namespace platform::transfers {

bool Sink::respond(long status, std::int64_t expectedLength) {
    return goOn(takeResponse(status, expectedLength));
}

bool Sink::receive(std::string_view bytes) {
    return goOn(take(bytes)) && !hasEnough();
}

bool Sink::goOn(std::optional<TransferFailure> failure) {
    failure_ = std::move(failure);
    return !failure_;
}

void Sink::end(const std::optional<TransferFailure>& failure, const std::string& url) {
    if (!failure_)
        failure_ = failure;
    if (!failure_)
        failure_ = succeed();
    if (failure_)
        fail(errorOf(*failure_, url));
}

} // namespace platform::transfers
