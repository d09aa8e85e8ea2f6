#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace platform {

// The first bytes of a file, as many as the limit allows; links are followed. Nothing when it is no regular file or
// cannot be read: devices and FIFOs are never opened. Any thread.
std::optional<std::string> readRegularFile(const std::string& path, std::size_t limit);

// Whether the path is a regular file, links followed, that this user may execute.
bool isExecutableFile(const std::string& path);

} // namespace platform
