#pragma once

#include "foundation/URL.h"

#include <cstdint>
#include <optional>
#include <string>

namespace platform::curl {

// How a source is reached.
enum class SourceKind : std::uint8_t { Web, File, Unsupported };

SourceKind kindOf(const foundation::URL& url);

// Whether what is sent to and comes from the URL is encrypted.
bool isSecure(const std::string& url);

// The path of a file URL of this machine; nothing for another machine's.
std::optional<std::string> localPath(const foundation::URL& url);

} // namespace platform::curl
