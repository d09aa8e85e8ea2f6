#pragma once

#include "foundation/Error.h"

#include <cstdint>
#include <string>

namespace platform::transfers {

// Why a transfer failed: a code of URLErrorCode, a sentence for people, and what the system said, or nothing.
struct TransferFailure {
    std::int64_t code = 0;
    std::string text;
    std::string detail;
};

// The failure of a file operation; the system's text for the error number completes the sentence.
TransferFailure fileFailure(std::int64_t code, const std::string& sentence, int errorNumber);

// The system has no means for a transfer, such as a further thread.
TransferFailure startFailure();

// The server answered a download with an error.
TransferFailure statusFailure(long status);

// The answer's body or header lines are longer than the limits.
TransferFailure lengthFailure();

// A redirect that may not be followed.
TransferFailure redirectFailure();
TransferFailure redirectCountFailure();

// The error that a delegate gets for a transfer of that URL.
foundation::Error errorOf(const TransferFailure& failure, const std::string& url);

} // namespace platform::transfers
