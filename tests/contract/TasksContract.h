#pragma once

#include "platform/Tasks.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace tests {

// A task with pipes, and what has come of it so far.
class RunningTask {
public:
    RunningTask(platform::Tasks& tasks, std::shared_ptr<platform::RunLoop> loop, platform::TaskDescription task)
        : tasks_(tasks), loop_(std::move(loop)), task_(std::move(task)) {
        task_.standardInput = tasks_.makePipe();
        task_.standardOutput = tasks_.makePipe();
    }

    // Starts reading and launches. Whether that worked.
    bool launch() {
        task_.standardOutput->readToEndInBackground(
            loop_, [this](const std::string& bytes) { outputs.push_back(bytes); });
        return tasks_.launch(task_, loop_, [this](int status) { statuses.push_back(status); });
    }
    // Runs the loop until the condition holds; a task that hangs ends by the time limit of the test run.
    void runUntil(const std::function<bool()>& condition) const {
        while (!condition())
            loop_->runOnce(std::chrono::seconds(1));
    }
    void runToTheEnd() const {
        runUntil([this] { return !outputs.empty() && !statuses.empty(); });
    }

    platform::Pipe& input() const { return *task_.standardInput; }
    void dropPipes() { task_.standardInput = task_.standardOutput = nullptr; }
    platform::RunLoop& loop() const { return *loop_; }

    std::vector<std::string> outputs;
    std::vector<int> statuses;

private:
    platform::Tasks& tasks_;
    std::shared_ptr<platform::RunLoop> loop_;
    platform::TaskDescription task_;
};

// What a tool of these tests does before it ends.
struct ToolOrder {
    std::string output;
    int status = 0;
    bool bySignal = false; // the status is the number of the signal that ends it
    bool waitsForEndOfInput = false;
};

// What all tasks and loops do. A `World` has `tasks`, `makeLoop()`, and `tool(order)`, a task that does so.
template <class World>
class TasksContract : public testing::Test {
protected:
    RunningTask task(const platform::TaskDescription& description) {
        return {world_.tasks, world_.makeLoop(), description};
    }

    World world_;
};
TYPED_TEST_SUITE_P(TasksContract);

TYPED_TEST_P(TasksContract, OutputAndStatusArriveOnceEach) {
    for (const ToolOrder& order :
         {ToolOrder{"some\nlines\n"}, {"", 255}, {"out", 9, true}, {"", 13, true}, {"", 15, true}}) {
        SCOPED_TRACE(order.status);
        RunningTask running = this->task(this->world_.tool(order));
        ASSERT_TRUE(running.launch());
        running.runToTheEnd();
        EXPECT_FALSE(running.loop().runOnce(std::chrono::milliseconds(0)));
        EXPECT_EQ(running.outputs, std::vector<std::string>{order.output});
        EXPECT_EQ(running.statuses, std::vector<int>{order.status});
    }
}

TYPED_TEST_P(TasksContract, TheEndOfTheInputIsSeen) {
    for (const bool drops : {false, true}) {
        RunningTask running = this->task(this->world_.tool({"x", 0, false, true}));
        ASSERT_TRUE(running.launch());
        EXPECT_TRUE(running.input().write("yes\n"));
        EXPECT_FALSE(running.loop().runOnce(std::chrono::milliseconds(20)));
        drops ? running.dropPipes() : running.input().closeWriting();
        running.runToTheEnd();
        EXPECT_EQ(running.outputs, std::vector<std::string>{"x"});
    }
}

TYPED_TEST_P(TasksContract, WhatCannotBeStartedHasNoEnd) {
    for (const char* path : {"/missing/tool", "tool", ""}) {
        const platform::TaskDescription description{path, {}, {}, nullptr, nullptr};
        RunningTask running = this->task(description);
        EXPECT_FALSE(running.launch()) << path;
        EXPECT_TRUE(running.statuses.empty());
        EXPECT_FALSE(this->world_.tasks.launchDetached(description)) << path;
    }
}

REGISTER_TYPED_TEST_SUITE_P(TasksContract, OutputAndStatusArriveOnceEach, TheEndOfTheInputIsSeen,
                            WhatCannotBeStartedHasNoEnd);

} // namespace tests
