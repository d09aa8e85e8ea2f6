#pragma once

#include "platform/UserInterface.h"

#include <deque>
#include <stdexcept>

// Sheets that a test answers, one after the other.
class FakeAlerts final : public platform::Alerts {
public:
    void beginSheet(const platform::Alert& alert, std::function<void(int returnCode)> ended) override {
        waiting_.push_back({alert, std::move(ended)});
    }

    // How many alerts were begun and not answered; the first of them is the one on the screen.
    std::size_t count() const { return waiting_.size(); }

    const platform::Alert& shown() const {
        if (waiting_.empty())
            throw std::logic_error("no alert is open");
        return waiting_.front().alert;
    }

    // Chooses a button of the alert on the screen, by its return code.
    void answer(int returnCode) {
        const auto last = platform::Alert::firstButtonReturn + static_cast<int>(shown().buttons.size()) - 1;
        if (returnCode > last)
            throw std::logic_error("the alert has no such button");
        const auto ended = std::move(waiting_.front().ended);
        waiting_.pop_front();
        ended(returnCode);
    }

private:
    struct Sheet {
        platform::Alert alert;
        std::function<void(int returnCode)> ended;
    };

    std::deque<Sheet> waiting_;
};
