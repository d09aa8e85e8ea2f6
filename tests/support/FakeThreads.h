#pragma once

#include "tests/support/FakeRunLoop.h"

#include <cstddef>

// Hand-over that waits until a test runs it, all on the test's own thread.
class FakeThreads final : public platform::Threads {
public:
    void performOnMain(std::function<void()> step) override { main_.push_back(std::move(step)); }
    bool performInBackground(std::function<void()> step) override {
        if (threadsLeft-- <= 0)
            return false;
        background_.push_back(std::move(step));
        return true;
    }
    std::shared_ptr<platform::RunLoop> makeRunLoop() override { return std::make_shared<FakeRunLoop>(endlessWaits); }

    int threadsLeft = 100000;
    int endlessWaits = 0; // what would have hung the program

    std::size_t backgroundCount() const { return background_.size(); }

    // Whether a background step is running right now.
    bool inBackground() const { return inBackground_; }

    // Runs the oldest step for the main thread; whether there was one.
    bool runMain() { return run(main_, 0); }

    // Runs a waiting background step, by its age; whether there was one.
    bool runBackground(std::size_t index = 0) {
        inBackground_ = true;
        const bool ran = run(background_, index);
        inBackground_ = false;
        return ran;
    }

    // Runs everything that waits and what it leads to.
    void runAll() {
        for (int left = 10000; runMain() || runBackground(); --left)
            if (left == 0)
                throw std::logic_error("the steps never end");
    }

private:
    using Steps = std::deque<std::function<void()>>;

    static bool run(Steps& steps, std::size_t index) {
        if (index >= steps.size())
            return false;
        const auto place = steps.begin() + static_cast<Steps::difference_type>(index);
        const auto step = std::move(*place);
        steps.erase(place);
        step();
        return true;
    }

    Steps main_;
    Steps background_;
    bool inBackground_ = false;
};
