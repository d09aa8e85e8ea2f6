// Child processes: what they are given, how they end, and everybody's contract over them and over the fake.

#include "platform/posix/PosixTasks.h"
#include "platform/posix/PosixRunLoop.h"
#include "tests/contract/TasksContract.h"
#include "tests/contract/TestFolder.h"
#include "tests/support/FakeTasks.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <map>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace std::chrono_literals;
using platform::TaskDescription;
using tests::RunningTask;

namespace {

class PosixTasks : public testing::Test {
protected:
    // Tests before may have left tools that nobody waits for any more; they are ending.
    PosixTasks() {
        while (::waitpid(-1, nullptr, 0) > 0) {
        }
    }

    RunningTask task(std::vector<std::string> steps, std::optional<std::string> directory = std::nullopt) {
        return {tasks_,
                std::make_shared<platform::PosixRunLoop>(),
                {TASK_TEST_PROGRAM, std::move(steps), std::move(directory), nullptr, nullptr}};
    }

    // The output of a task that succeeds.
    std::string outputOf(std::vector<std::string> steps, std::optional<std::string> directory = std::nullopt) {
        RunningTask running = task(std::move(steps), std::move(directory));
        if (!running.launch())
            return "not started";
        running.input().closeWriting();
        running.runToTheEnd();
        EXPECT_EQ(running.statuses, std::vector<int>{0});
        return running.outputs.front();
    }

    // What a task tells of its surroundings, by the first word of each line.
    static std::map<std::string, std::string> facts(const std::string& surroundings) {
        std::map<std::string, std::string> found;
        std::istringstream lines(surroundings);
        for (std::string key, value; lines >> key && std::getline(lines, value);)
            found[key] = value.substr(1);
        return found;
    }

    // No child is left, running or ended.
    static bool hasNoChild() { return ::waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD; }

    tests::TestFolder folder_;
    platform::PosixTasks tasks_;
};

// A failing tool closes its output a moment before its status can be had. Whoever waits no longer than this for it must
// know it, however the two come in.
TEST_F(PosixTasks, TheStatusIsKnownSoonAfterTheOutput) {
    for (int run = 0; run < 200; ++run) {
        RunningTask running = task({"print", "x", "exit", "1"});
        ASSERT_TRUE(running.launch());
        running.runUntil([&] { return !running.outputs.empty(); });
        if (running.statuses.empty())
            running.loop().runOnce(5s);
        ASSERT_EQ(running.statuses, std::vector<int>{1});
    }
    EXPECT_TRUE(hasNoChild());
}

TEST_F(PosixTasks, ArgumentsArriveAsTheyAre) {
    EXPECT_EQ(outputOf({"arguments", "", "two words", "$HOME;*", "\xff\n"}),
              std::string("\0two words\0$HOME;*\0\xff\n\0", 22));
    EXPECT_FALSE(task({std::string("print\0", 6)}).launch());
}

TEST_F(PosixTasks, AChildIsGivenItsStreamsAndNothingElse) {
    const int foreign = ::open("/dev/null", O_RDONLY);
    std::signal(SIGUSR1, SIG_IGN);
    sigset_t blocked{};
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGUSR2);
    ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    auto found = facts(outputOf({"surroundings"}, folder_.path()));
    ASSERT_TRUE(tasks_.launchDetached({TASK_TEST_PROGRAM, {"report", folder_.path("report")}, {}, {}, {}}));
    while (!std::filesystem::exists(folder_.path("report")))
        std::this_thread::sleep_for(1ms);
    auto detached = facts(folder_.read("report"));
    ::pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    std::signal(SIGUSR1, SIG_DFL);
    ::close(foreign);

    EXPECT_EQ(found["descriptors"] + found["signals"], "0 1 2 ");
    EXPECT_EQ(found["folder"], folder_.path());
    EXPECT_EQ(found["parent"], std::to_string(::getpid()));
    EXPECT_EQ(found["ownGroup"], "1");

    EXPECT_EQ(detached["descriptors"] + detached["signals"], "0 1 2 ");
    EXPECT_EQ(detached["folder"], "/");
    EXPECT_NE(detached["parent"], found["parent"]);
    EXPECT_NE(detached["session"], std::to_string(::getsid(0)));
    EXPECT_EQ(detached["session"], detached["group"]);
    EXPECT_EQ(detached["streams"], "/dev/null /dev/null /dev/null");
}

TEST_F(PosixTasks, WhatCannotBeStartedLeavesNothingBehind) {
    const std::string plain = folder_.write("plain", "#!/bin/sh\n");
    const std::string noProgram = folder_.write("noProgram", "neither script nor program", true);
    const std::string badScript = folder_.write("badScript", "#!/missing/interpreter\n", true);
    const auto expectRefusal = [this](const TaskDescription& description) {
        SCOPED_TRACE(description.path + ' ' + description.directory.value_or(""));
        RunningTask running(tasks_, std::make_shared<platform::PosixRunLoop>(), description);
        EXPECT_FALSE(running.launch());
        EXPECT_TRUE(running.statuses.empty());
        EXPECT_FALSE(tasks_.launchDetached(description));
        EXPECT_FALSE(tasks_.launch(description, nullptr, {}));
    };
    for (const std::string& path : {plain, noProgram, badScript, folder_.path()})
        expectRefusal({path, {}, {}, nullptr, nullptr});
    for (const std::string& directory : {folder_.path("missing"), plain})
        expectRefusal({TASK_TEST_PROGRAM, {}, directory, nullptr, nullptr});
    EXPECT_TRUE(hasNoChild());
}

// The step that runs tools with administrator rights takes whichever child of its thread ends first.
TEST_F(PosixTasks, ADetachedToolIsNeverAChildAndOtherThreadsChildrenAreTheirOwn) {
    ASSERT_TRUE(tasks_.launchDetached({TASK_TEST_PROGRAM, {"flood", "1000000"}, {}, {}, {}}));
    EXPECT_TRUE(hasNoChild());
    RunningTask running = task({"waitForEndOfInput"});
    ASSERT_TRUE(running.launch());
    std::thread([] {
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG | __WNOTHREAD), -1);
        EXPECT_EQ(errno, ECHILD);
    }).join();
    running.input().closeWriting();
    running.runToTheEnd();
}

TEST_F(PosixTasks, LargeInputAndOutputPass) {
    std::string bytes(65536, 'x');
    for (std::size_t at = 0; at < bytes.size(); at += 100)
        bytes[at] = static_cast<char>(at / 100);
    RunningTask running = task({"repeatInput"});
    ASSERT_TRUE(running.launch());
    EXPECT_TRUE(running.input().write(bytes));
    running.input().closeWriting();
    running.runToTheEnd();
    EXPECT_TRUE(running.outputs.front() == bytes);
    EXPECT_EQ(outputOf({"flood", "10000000"}).size(), 10000000U);
}

TEST_F(PosixTasks, AToolMayCloseItsStreamsEarly) {
    RunningTask running = task({"closeInput", "print", "early", "closeOutput", "waitForEndOfInput", "exit", "3"});
    ASSERT_TRUE(running.launch());
    running.runToTheEnd();
    EXPECT_EQ(running.outputs, std::vector<std::string>{"early"});
    EXPECT_EQ(running.statuses, std::vector<int>{3});
    EXPECT_FALSE(running.input().write("yes\n")) << "nobody reads it, which is an ordinary failure";

    RunningTask waiting = task({"closeOutput", "waitForEndOfInput"});
    ASSERT_TRUE(waiting.launch());
    waiting.runUntil([&] { return !waiting.outputs.empty(); });
    EXPECT_TRUE(waiting.statuses.empty());
    waiting.input().closeWriting();
}

// The runner does not have to wait for a tool that keeps running.
TEST_F(PosixTasks, RunnersMayGoBeforeTheTool) {
    auto loop = std::make_shared<platform::PosixRunLoop>();
    const auto seen = std::make_shared<std::vector<std::string>>();
    const auto launch = [&] {
        TaskDescription description{TASK_TEST_PROGRAM, {"waitForEndOfInput", "print", "x"}, {}, {}, {}};
        description.standardInput = tasks_.makePipe();
        description.standardOutput = tasks_.makePipe();
        description.standardOutput->readToEndInBackground(loop,
                                                          [seen](const std::string& text) { seen->push_back(text); });
        EXPECT_TRUE(tasks_.launch(description, loop, [seen](int) { seen->push_back("ended"); }));
        return description.standardInput;
    };
    // Dropping the pipes is the end of the input.
    launch().reset();
    while (seen->size() < 2)
        ASSERT_TRUE(loop->runOnce(1min));
    EXPECT_EQ(std::count(seen->begin(), seen->end(), "x"), 1);
    EXPECT_EQ(std::count(seen->begin(), seen->end(), "ended"), 1);

    std::shared_ptr<platform::Pipe> input = launch();
    loop.reset();
    EXPECT_EQ(seen.use_count(), 1);
    input.reset();
}

TEST_F(PosixTasks, RunLoopsEndTheirWait) {
    RunningTask running = task({"print", "x", "waitForEndOfInput"});
    EXPECT_FALSE(running.loop().runOnce(0ms));
    ASSERT_TRUE(running.launch());
    EXPECT_FALSE(running.loop().runOnce(20ms)) << "an output that has not ended is no event";
    std::thread late([&] { running.input().closeWriting(); });
    EXPECT_TRUE(running.loop().runOnce(std::chrono::milliseconds::max()));
    EXPECT_TRUE(running.loop().runOnce(1min));
    late.join();
    EXPECT_EQ(running.outputs, std::vector<std::string>{"x"});
    EXPECT_EQ(running.statuses, std::vector<int>{0});
}

} // namespace

namespace tests {

namespace {

struct PosixWorld {
    static std::shared_ptr<platform::RunLoop> makeLoop() { return std::make_shared<platform::PosixRunLoop>(); }
    static TaskDescription tool(const ToolOrder& order) {
        std::vector<std::string> steps{"print", order.output, order.bySignal ? "signal" : "exit",
                                       std::to_string(order.status)};
        if (order.waitsForEndOfInput)
            steps.insert(steps.begin(), "waitForEndOfInput");
        return {TASK_TEST_PROGRAM, steps, {}, nullptr, nullptr};
    }

    platform::PosixTasks tasks;
};

struct FakeWorld {
    std::shared_ptr<platform::RunLoop> makeLoop() { return std::make_shared<FakeRunLoop>(endlessWaits); }
    TaskDescription tool(const ToolOrder& order) {
        FakeTool& tool = tasks.tools["/bin/tool"];
        tool.output = order.output;
        tool.status = order.status;
        tool.waitsForEndOfInput = order.waitsForEndOfInput;
        return {"/bin/tool", {}, {}, nullptr, nullptr};
    }

    FakeTasks tasks;
    int endlessWaits = 0;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, TasksContract, PosixWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TasksContract, FakeWorld);

} // namespace

} // namespace tests
