#pragma once

#include <string>

namespace platform {

// A display that a window can be shown on, found out before Qt is asked: Qt aborts the program when it cannot reach the
// display that the environment names, or lacks the plug-in for it, and waits without end for one that never answers.
struct UsableDisplay {
    // Tries what the environment names, each for some seconds at most. Before the Qt application object is made.
    static UsableDisplay find();

    bool exists = false;
    // Qt's names of the plug-ins that can be used; empty leaves the choice to Qt.
    std::string plugIns;
    // Why no window can be shown although a display is named; empty where none is named, or one can be used.
    std::string problem;
};

} // namespace platform
