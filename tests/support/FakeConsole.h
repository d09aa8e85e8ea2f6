#pragma once

#include "platform/ProcessInfo.h"

class FakeConsole final : public platform::Console {
public:
    void log(const std::string& message) override { messages.push_back(message); }

    std::vector<std::string> messages;
};
