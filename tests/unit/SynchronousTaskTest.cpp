#include "install/NTSynchronousTask.h"

#include "tests/unit/CoreTest.h"

// What a tool's run comes to. How children, pipes and loops really behave: the contract tests.

class SynchronousTaskTest : public CoreTest {
protected:
    std::optional<std::string> run(const std::optional<std::string>& input = "yes\n") {
        return NTSynchronousTask::task("/bin/tool", "/", {"a", "b c"}, input);
    }
    FakeTool& tool = system.tasks.tools["/bin/tool"];
};

// Deliberate in the program: a status that comes just after the end of the output still counts.
TEST_F(SynchronousTaskTest, OutputCountsOnlyWithStatusZero) {
    using Ending = FakeTool::Ending;
    const std::string output(10U << 20U, 'x');
    for (const int status : {0, 1, 9}) {
        for (const Ending ending : {Ending::OutputThenStatus, Ending::StatusThenOutput}) {
            tool = {output, status, ending, false, false, nullptr};
            EXPECT_EQ(run() == output, status == 0) << status << (ending == Ending::StatusThenOutput ? " first" : "");
        }
    }
    tool.status = 0;
    tool.output = "";
    EXPECT_EQ(run(), "");
    // Deliberate in the program: the end of the output ends the wait.
    tool = {"x", 1, Ending::OutputAlone, false, false, nullptr};
    EXPECT_EQ(run(), "x") << "a tool that closes its output and runs on counts as a success";
}

TEST_F(SynchronousTaskTest, TheToolGetsItsArgumentsAndItsWholeInput) {
    tool.waitsForEndOfInput = true;
    tool.output = "done";
    EXPECT_EQ(run(""), "done") << "an empty input ends too";
    EXPECT_EQ(run(), "done");
    const FakeTasks::Launch& launch = system.tasks.launches.back();
    EXPECT_EQ(launch.task.arguments, (Texts{"a", "b c"}));
    EXPECT_EQ(launch.task.directory, "/");
    EXPECT_EQ(launch.input->written, "yes\n");
    EXPECT_TRUE(launch.input->ended);
}

TEST_F(SynchronousTaskTest, WithoutInputTheToolsInputStaysOpenUntilTheEnd) {
    EXPECT_EQ(run(std::nullopt), "");
    EXPECT_FALSE(system.tasks.launches[0].input->ended);
    EXPECT_TRUE(system.tasks.launches[0].inputPipe.expired());
    tool.waitsForEndOfInput = true;
    run(std::nullopt);
    EXPECT_EQ(system.threads.endlessWaits, 1) << "nothing limits the wait";
}

TEST_F(SynchronousTaskTest, WhatCannotBeStartedOrFedYieldsNothing) {
    tool.effect = [](const auto&) { throw std::runtime_error("no descriptor left"); };
    EXPECT_EQ(run(), std::nullopt);
    tool.effect = nullptr;
    tool.refusesInput = true;
    EXPECT_EQ(run(), std::nullopt);
    EXPECT_EQ(NTSynchronousTask::task("/bin/missing", "/", {}, "yes\n"), std::nullopt);
    for (const int pipes : {0, 1}) {
        system.tasks.pipesLeft = pipes;
        EXPECT_EQ(run(), std::nullopt);
    }
    EXPECT_EQ(system.tasks.launches.size(), 2U);
}
