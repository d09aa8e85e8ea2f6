#pragma once

#include <string>

namespace hdiutil {

// Fills the empty folder mountPoint with the content of the image's volume and prints device, type and mount point to
// standard output. If that fails, or the program is told to end, the mount point is emptied again and Failure thrown;
// if the program that asked for it has ended as well, the mount point is removed.
void attach(const std::string& image, const std::string& mountPoint);

} // namespace hdiutil
