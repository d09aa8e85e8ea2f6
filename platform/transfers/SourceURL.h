#pragma once

#include "foundation/URL.h"
#include "platform/transfers/TransferFailure.h"

#include <optional>
#include <string>

namespace platform::transfers {

bool isFileURL(const foundation::URL& url);

// Why the URL cannot be asked for over the web: another scheme, or no host. Nothing when it can.
std::optional<TransferFailure> webURLFailure(const foundation::URL& url);

// Why a redirect to that address must not be followed: it is one of the web and names no host. Other reasons are the
// loader's to see, and an address relative to the last one has none.
std::optional<TransferFailure> redirectTargetFailure(const std::string& location);

// Whether what is sent to and comes from the URL is encrypted.
bool isSecure(const std::string& url);

// The path of a file URL of this machine; nothing for another machine's.
std::optional<std::string> localPath(const foundation::URL& url);

} // namespace platform::transfers
