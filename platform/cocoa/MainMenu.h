#pragma once

#include "platform/Bundles.h"

#include <functional>

namespace platform {

// Makes the menu bar, with the titles of the main bundle's table, and gives it to the application: hide, quit;
// minimize; help. Main thread, after the application object.
void installMainMenu(Bundles& bundles, std::function<void()> quit, std::function<void()> showHelp);

} // namespace platform
