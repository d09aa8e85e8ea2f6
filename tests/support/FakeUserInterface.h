#pragma once

#include "platform/AlertQueue.h"

#include <stdexcept>
#include <string>
#include <vector>

// Sheets that a test answers, one after the other.
class FakeAlerts final : public platform::AlertQueue {
public:
    // How many alerts have begun and not ended; the first of them is the one on the screen.
    using platform::AlertQueue::count;

    const platform::Alert& shown() const {
        if (shown_ == nullptr)
            throw std::logic_error("no alert is on the screen");
        return *shown_;
    }

    // Chooses a button of the alert on the screen, by its return code.
    using platform::AlertQueue::answer;

    // Whether the interface went away with the last alert.
    bool leftTheScreen = false;

private:
    void show(const platform::Alert& alert) override { shown_ = &alert; }
    void allEnded(bool programEnds) override {
        shown_ = nullptr;
        leftTheScreen = programEnds;
    }

    const platform::Alert* shown_ = nullptr;
};

// The window with its label and bar in one, writing down what it is told.
class FakeProgressWindow final : public platform::Window, public platform::Label, public platform::ProgressIndicator {
public:
    void setTitle(const std::string& title) override { changes.push_back("title " + title); }
    void orderFront() override { changes.emplace_back("front"); }
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
