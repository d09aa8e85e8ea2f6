#pragma once

#include "platform/UserInterface.h"

// The window with its label and bar in one, writing down what it is told.
class FakeProgressWindow final : public platform::Window, public platform::Label, public platform::ProgressIndicator {
public:
    void setTitle(const std::string& title) override { changes.push_back("title " + title); }
    void setStringValue(const std::string& text) override { changes.push_back("text " + text); }
    void setIndeterminate(bool indeterminate) override {
        changes.emplace_back(indeterminate ? "indeterminate" : "determinate");
    }
    void setMinValue(double value) override { changes.push_back("minimum " + std::to_string(value)); }
    void setMaxValue(double value) override { changes.push_back("maximum " + std::to_string(value)); }
    void setDoubleValue(double value) override { changes.push_back("value " + std::to_string(value)); }
    void startAnimation() override { changes.emplace_back("start"); }
    void stopAnimation() override { changes.emplace_back("stop"); }

    std::vector<std::string> changes;
};
