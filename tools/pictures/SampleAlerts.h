#pragma once

#include "platform/UserInterface.h"
#include "tools/pictures/TextTable.h"

#include <vector>

// The alerts that the program can show, as it makes them.
class SampleAlerts {
public:
    // With the texts of the table: the question whether to quit, a failure of each stage, and the store warning.
    static std::vector<platform::Alert> all(const TextTable& texts);
};
