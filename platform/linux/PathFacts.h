#pragma once

#include <cstddef>
#include <optional>
#include <string>

// Questions about what lies at a path. Links are followed unless said otherwise. Any thread.
namespace platform {

// The first bytes of a file, as many as the limit allows. Nothing when it is no regular file or cannot be read: devices
// and FIFOs are never opened.
std::optional<std::string> readRegularFile(const std::string& path, std::size_t limit);

// Whether the path is a regular file that this user may execute.
bool isExecutableFile(const std::string& path);

bool isFolder(const std::string& path);

// The absolute path without any link in it, or empty when nothing is there.
std::string resolvedPath(const std::string& path);

// What the link itself says, or empty when it is none.
std::string linkTarget(const std::string& path);

// The path of a process's executable by its folder in /proc, even when it has been deleted since.
std::string executableOfProcess(const std::string& processFolder);

} // namespace platform
