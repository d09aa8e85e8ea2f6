// What the core relies on in task services. The real ones and their fake behave alike.

#include "tests/contract/TasksWorld.h"

#include <gtest/gtest.h>

using tests::RunningTask;
using tests::TasksWorld;
using tests::ToolBehaviour;

namespace {

struct World {
    const char* name;
    std::unique_ptr<TasksWorld> (*make)();
};

void PrintTo(const World& world, std::ostream* stream) {
    *stream << world.name;
}

class TasksContract : public testing::TestWithParam<World> {
protected:
    RunningTask task(const ToolBehaviour& behaviour) {
        return {world_->tasks(), world_->makeRunLoop(), world_->tool(behaviour)};
    }

    std::unique_ptr<TasksWorld> world_ = GetParam().make();
};

INSTANTIATE_TEST_SUITE_P(Services, TasksContract,
                         testing::Values(World{"Real", tests::makeRealTasks}, World{"Fake", tests::makeFakeTasks}),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(TasksContract, OutputAndStatusArriveOnceEach) {
    for (const auto& [output, status] :
         std::initializer_list<std::pair<std::string, int>>{{"", 0}, {"some\nlines\n", 0}, {"out", 1}, {"", 255}}) {
        RunningTask running = task({.output = output, .status = status});
        ASSERT_TRUE(running.launch());
        running.runToTheEnd();
        EXPECT_EQ(running.outputs, std::vector<std::string>{output});
        EXPECT_EQ(running.statuses, std::vector<int>{status});
    }
}

TEST_P(TasksContract, AToolThatCannotBeStartedReportsNothing) {
    platform::TaskDescription missing;
    missing.path = "/missing/tool";
    RunningTask running(world_->tasks(), world_->makeRunLoop(), missing);
    EXPECT_FALSE(running.launch());
    EXPECT_TRUE(running.statuses.empty());
    EXPECT_FALSE(world_->tasks().launchDetached(missing));
}

TEST_P(TasksContract, TheEndOfInputIsSeenOnlyWhenItIsClosed) {
    RunningTask running = task({.output = "after", .waitsForInput = true, .status = 3});
    ASSERT_TRUE(running.launch());
    EXPECT_TRUE(running.input().write("yes\n"));
    EXPECT_TRUE(running.outputs.empty());
    running.input().closeWriting();
    running.runToTheEnd();
    EXPECT_EQ(running.outputs, std::vector<std::string>{"after"});
    EXPECT_EQ(running.statuses, std::vector<int>{3});
}

TEST_P(TasksContract, AnOutputThatIsClosedEarlyIsNotHeldBackByTheTool) {
    RunningTask running = task({.output = "early", .closesOutputEarly = true});
    ASSERT_TRUE(running.launch());
    running.runUntilOutput();
    EXPECT_EQ(running.outputs, std::vector<std::string>{"early"});
    EXPECT_TRUE(running.statuses.empty());
    running.input().closeWriting();
}

TEST_P(TasksContract, InputThatNobodyReadsIsAnOrdinaryFailure) {
    RunningTask running = task({.output = "x", .refusesInput = true});
    ASSERT_TRUE(running.launch());
    running.runUntilOutput();
    EXPECT_FALSE(running.input().write("yes\n"));
}

TEST_P(TasksContract, DetachedToolsStart) {
    EXPECT_TRUE(world_->tasks().launchDetached(world_->tool({})));
}

} // namespace
