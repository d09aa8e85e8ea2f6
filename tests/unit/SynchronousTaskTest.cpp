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

TEST_F(SynchronousTaskTest, OutputCountsOnlyWithStatusZero) {
    using Ending = FakeTool::Ending;
    struct Row {
        const char* name;
        int status;
        Ending ending;
        std::optional<std::string> expected;
    };
    const std::string output(10U << 20U, 'x');
    const Row rows[] = {
        {"success", 0, Ending::OutputThenStatus, output},
        {"success, status first", 0, Ending::StatusThenOutput, output},
        {"failure right after the output", 1, Ending::OutputThenStatus, {}},
        {"failure, status first", 1, Ending::StatusThenOutput, {}},
        {"ended by a signal", 9, Ending::OutputThenStatus, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        tool = {output, row.status, row.ending, false, false, nullptr};
        EXPECT_EQ(run(), row.expected);
    }
}

// Deliberate in the program: the end of the output ends the wait.
TEST_F(SynchronousTaskTest, AToolThatClosesItsOutputAndRunsOnCountsAsSuccess) {
    tool.output = "x";
    tool.status = 1;
    tool.ending = FakeTool::Ending::OutputAlone;
    EXPECT_EQ(run(), "x");
}

TEST_F(SynchronousTaskTest, AToolThatWritesNothingYieldsEmptyOutput) {
    EXPECT_EQ(run(), "");
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
    NTSynchronousTask::task("/bin/tool", std::nullopt, {}, "");
    EXPECT_EQ(system.tasks.launches.back().task.directory, std::nullopt);
}

TEST_F(SynchronousTaskTest, WithoutInputTheToolsInputStaysOpenUntilTheEnd) {
    EXPECT_EQ(run(std::nullopt), "");
    EXPECT_FALSE(system.tasks.launches[0].input->ended);
    EXPECT_TRUE(system.tasks.launches[0].inputPipe.expired());
    tool.waitsForEndOfInput = true;
    EXPECT_THROW(run(std::nullopt), std::logic_error) << "nothing limits the wait";
}

TEST_F(SynchronousTaskTest, WhatCannotBeStartedOrFedYieldsNothing) {
    tool.refusesInput = true;
    EXPECT_EQ(run(), std::nullopt);
    EXPECT_EQ(NTSynchronousTask::task("/bin/missing", "/", {}, "yes\n"), std::nullopt);
    for (const int pipes : {0, 1}) {
        system.tasks.pipesLeft = pipes;
        EXPECT_EQ(run(), std::nullopt);
    }
    EXPECT_EQ(system.tasks.launches.size(), 1U);
}
