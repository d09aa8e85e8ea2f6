#pragma once

#include <string>

namespace hdiutil {

// Fills the empty folder at the path with the content of the image's volume and prints device, type and mount point to
// standard output. If that fails, or the program is told to end, the mount point is emptied again and Failure thrown;
// if the program that asked for it has ended as well, the mount point is removed.
void attach(const std::string& imagePath, const std::string& path);

} // namespace hdiutil
