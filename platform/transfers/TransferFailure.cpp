#include "platform/transfers/TransferFailure.h"

#include "platform/Transfers.h"

#include <system_error>

namespace platform::transfers {

TransferFailure fileFailure(std::int64_t code, const std::string& sentence, int errorNumber) {
    const std::string reason = std::generic_category().message(errorNumber);
    return {code, sentence + ": " + reason + ".", reason};
}

TransferFailure startFailure() {
    return {URLErrorCode::unknown, "The transfer could not be started: the system has no threads or memory left.", {}};
}

TransferFailure statusFailure(long status) {
    return {URLErrorCode::fileDoesNotExist, "The server answered with status " + std::to_string(status) + ".", {}};
}

TransferFailure lengthFailure() {
    return {URLErrorCode::dataLengthExceedsMaximum, "The server's answer is too long.", {}};
}

TransferFailure redirectFailure() {
    return {URLErrorCode::unsupportedURL, "The server redirected to an address that is not allowed.", {}};
}

TransferFailure redirectCountFailure() {
    return {URLErrorCode::tooManyRedirects, "The server redirected too many times.", {}};
}

foundation::Error errorOf(const TransferFailure& failure, const std::string& url) {
    auto error = foundation::Error::withDescription(foundation::urlErrorDomain, failure.code, failure.text);
    error.userInfo.emplace("NSErrorFailingURLStringKey", foundation::Value(url));
    if (!failure.detail.empty())
        error.userInfo.emplace(foundation::debugDescriptionKey, foundation::Value(failure.detail));
    return error;
}

} // namespace platform::transfers
