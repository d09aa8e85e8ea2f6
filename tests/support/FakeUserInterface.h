#pragma once

#include "platform/UserInterface.h"

#include <deque>

// Sheets that a test answers, one after the other.
class FakeAlerts final : public platform::Alerts {
public:
    void beginSheet(const platform::Alert& alert, std::function<void(int returnCode)> ended) override {
        waiting_.emplace_back(alert, std::move(ended));
    }

    // How many alerts were begun and not answered; the first of them is the one on the screen.
    std::size_t count() const { return waiting_.size(); }

    const platform::Alert& shown() const { return waiting_.at(0).first; }

    // Chooses a button of the alert on the screen, by its return code.
    void answer(int returnCode) {
        const auto ended = std::move(waiting_.at(0).second);
        waiting_.pop_front();
        ended(returnCode);
    }

private:
    std::deque<std::pair<platform::Alert, std::function<void(int returnCode)>>> waiting_;
};

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
