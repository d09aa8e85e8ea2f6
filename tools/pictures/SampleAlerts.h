#pragma once

#include "platform/UserInterface.h"
#include "tools/pictures/TextTable.h"

#include <vector>

// The alerts that the program can show, with its own texts.
class SampleAlerts {
public:
    static platform::Alert quitWhileBusy(const TextTable& texts);
    static platform::Alert checkFailed(const TextTable& texts);
    static platform::Alert downloadFailed(const TextTable& texts);
    static platform::Alert installFailed(const TextTable& texts);
    static platform::Alert storeEdition(const TextTable& texts);

    static std::vector<platform::Alert> all(const TextTable& texts);
};
