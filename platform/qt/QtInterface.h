#pragma once

#include "platform/UserInterface.h"

#include <memory>
#include <string>

namespace platform {

// What the interface has to know of the program that it is the face of.
struct QtInterfaceOptions {
    // The language that the texts are in, such as "pt-BR": decides the reading direction and Qt's own texts.
    std::string language = "en";
    // The bundle identifier; also the name of the desktop file.
    std::string identifier;
    // What the desktop and screen readers call the program.
    std::string name;
    // Qt's plug-ins for the display, as UsableDisplay names them; empty leaves the choice to Qt.
    std::string plugIns = {};
};

// The main interface as a window, and the Qt application object with it; both end together. Never looks at the command
// line. Main thread; once at a time; needs a display.
std::unique_ptr<MainInterface> makeQtInterface(const QtInterfaceOptions& options);

} // namespace platform
