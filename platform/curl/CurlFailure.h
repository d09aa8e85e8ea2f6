#pragma once

#include "platform/transfers/TransferFailure.h"

#include <curl/curl.h>

namespace platform::curl {

// What libcurl's result means; `status` is the last HTTP status or 0, `redirects` how many were followed.
transfers::TransferFailure curlFailure(CURLcode result, long status, long redirects);

} // namespace platform::curl
