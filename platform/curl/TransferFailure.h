#pragma once

#include "foundation/Error.h"

#include <cstdint>
#include <curl/curl.h>
#include <string>

namespace platform::curl {

// Why a transfer failed: a code of URLErrorCode, a sentence for people, and what the system said, or nothing.
struct TransferFailure {
    std::int64_t code = 0;
    std::string text;
    std::string detail;
};

// The failure of a file operation; the system's text for the error number completes the sentence.
TransferFailure fileFailure(std::int64_t code, const std::string& sentence, int errorNumber);

// What libcurl's result means; `status` is the last HTTP status or 0, `redirects` how many were followed.
TransferFailure webFailure(CURLcode result, long status, long redirects);

// The error that a delegate gets for a transfer of that URL.
foundation::Error errorOf(const TransferFailure& failure, const std::string& url);

} // namespace platform::curl
