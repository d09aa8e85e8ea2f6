#pragma once

#include "platform/Tasks.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tests {

// What a tool does, in this order.
struct ToolBehaviour {
    std::string output;
    // Closes its output, and ends at the end of its input.
    bool closesOutputEarly = false;
    // Closes its input at once; its output comes afterwards.
    bool refusesInput = false;
    // Writes its output at the end of its input.
    bool waitsForInput = false;
    int status = 0;
};

// Task services to test, and tools for them.
class TasksWorld {
public:
    virtual ~TasksWorld() = default;

    virtual platform::Tasks& tasks() = 0;
    virtual std::shared_ptr<platform::RunLoop> makeRunLoop() = 0;

    // A task without pipes.
    virtual platform::TaskDescription tool(const ToolBehaviour& behaviour) = 0;
};

std::unique_ptr<TasksWorld> makeRealTasks();
std::unique_ptr<TasksWorld> makeFakeTasks();

// A task with pipes, and what has come of it so far.
class RunningTask {
public:
    RunningTask(platform::Tasks& tasks, std::shared_ptr<platform::RunLoop> loop, platform::TaskDescription task);

    // Starts reading and launches. Whether that worked.
    bool launch();

    // Runs the loop until the condition holds; a task that hangs ends by the time limit of the test run.
    void runUntil(const std::function<bool()>& condition);
    void runUntilOutput() {
        runUntil([this] { return !outputs.empty(); });
    }
    void runUntilStatus() {
        runUntil([this] { return !statuses.empty(); });
    }
    void runToTheEnd() {
        runUntil([this] { return !outputs.empty() && !statuses.empty(); });
    }

    platform::Pipe& input() { return *task_.standardInput; }
    // Drops both pipes.
    void dropPipes();

    std::vector<std::string> outputs;
    std::vector<int> statuses;

private:
    platform::Tasks& tasks_;
    std::shared_ptr<platform::RunLoop> loop_;
    platform::TaskDescription task_;
};

} // namespace tests
