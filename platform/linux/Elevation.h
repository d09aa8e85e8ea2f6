#pragma once

#include "platform/Tasks.h"

#include <string>
#include <vector>

namespace platform {

// How a tool is run as administrator.
enum class Elevation {
    None,          // there is no way
    Direct,        // this user is the administrator
    Pkexec,        // asks in a dialog of the desktop, or on the terminal
    SudoAskpass,   // asks with the program that the person has chosen
    SudoTerminal,  // asks on the terminal
    SudoWithoutAsk // works only where no password is needed
};

// What decides between them.
struct ElevationFacts {
    bool isRoot = false;
    bool hasPkexec = false; // and with the set-user-id bit that it works by
    bool hasSystemBus = false;
    bool hasDisplay = false;
    bool hasTerminal = false;
    bool hasSudo = false;
    bool hasAskpass = false;
};

// The facts about this process, as they are now.
ElevationFacts currentElevationFacts();

Elevation chooseElevation(const ElevationFacts& facts);

// What to start so that the tool runs as administrator. Nothing is started for None.
TaskDescription elevatedCommand(Elevation elevation, const std::string& tool,
                                const std::vector<std::string>& arguments);

// All that such a command may see of this process's environment, as "NAME=value".
std::vector<std::string> elevatedEnvironment(Elevation elevation);

} // namespace platform
