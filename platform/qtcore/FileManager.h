#pragma once

#include <string>

namespace platform {

// Asks the desktop's file manager, over the session bus, to show the item with that "file" URL. Waits two seconds at
// most. False when there is no session bus, or no file manager that answers there. Any thread.
bool showInFileManager(const std::string& uri);

} // namespace platform
