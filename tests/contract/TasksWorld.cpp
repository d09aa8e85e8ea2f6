#include "tests/contract/TasksWorld.h"

#include "platform/posix/PosixRunLoop.h"
#include "platform/posix/PosixTasks.h"
#include "tests/support/FakeRunLoop.h"
#include "tests/support/FakeTasks.h"

namespace tests {

namespace {

class RealTasks : public TasksWorld {
public:
    platform::Tasks& tasks() override { return tasks_; }
    std::shared_ptr<platform::RunLoop> makeRunLoop() override { return std::make_shared<platform::PosixRunLoop>(); }

    platform::TaskDescription tool(const ToolBehaviour& behaviour) override {
        platform::TaskDescription task;
        task.path = TASK_TEST_PROGRAM;
        if (behaviour.refusesInput)
            task.arguments.emplace_back("closeInput");
        if (behaviour.waitsForInput)
            task.arguments.emplace_back("waitForEndOfInput");
        task.arguments.insert(task.arguments.end(), {"print", behaviour.output});
        if (behaviour.closesOutputEarly)
            task.arguments.insert(task.arguments.end(), {"closeOutput", "waitForEndOfInput"});
        task.arguments.insert(task.arguments.end(), {"exit", std::to_string(behaviour.status)});
        return task;
    }

private:
    platform::PosixTasks tasks_;
};

class FakeTasksWorld : public TasksWorld {
public:
    platform::Tasks& tasks() override { return tasks_; }
    std::shared_ptr<platform::RunLoop> makeRunLoop() override { return std::make_shared<FakeRunLoop>(); }

    platform::TaskDescription tool(const ToolBehaviour& behaviour) override {
        platform::TaskDescription task;
        task.path = "/tools/" + std::to_string(tasks_.tools.size());
        FakeTool& tool = tasks_.tools[task.path];
        tool.output = behaviour.output;
        tool.status = behaviour.status;
        tool.refusesInput = behaviour.refusesInput;
        tool.waitsForEndOfInput = behaviour.waitsForInput;
        if (behaviour.closesOutputEarly)
            tool.ending = FakeTool::Ending::OutputAlone;
        return task;
    }

private:
    FakeTasks tasks_;
};

} // namespace

std::unique_ptr<TasksWorld> makeRealTasks() {
    return std::make_unique<RealTasks>();
}
std::unique_ptr<TasksWorld> makeFakeTasks() {
    return std::make_unique<FakeTasksWorld>();
}

RunningTask::RunningTask(platform::Tasks& tasks, std::shared_ptr<platform::RunLoop> loop,
                         platform::TaskDescription task)
    : tasks_(tasks), loop_(std::move(loop)), task_(std::move(task)) {
    task_.standardInput = tasks_.makePipe();
    task_.standardOutput = tasks_.makePipe();
}

bool RunningTask::launch() {
    task_.standardOutput->readToEndInBackground(loop_, [this](std::string bytes) { outputs.push_back(bytes); });
    return tasks_.launch(task_, loop_, [this](int status) { statuses.push_back(status); });
}

void RunningTask::runUntil(const std::function<bool()>& condition) {
    while (!condition())
        loop_->runOnce(std::chrono::seconds(1));
}

void RunningTask::dropPipes() {
    task_.standardInput = task_.standardOutput = nullptr;
}

} // namespace tests
