#pragma once

#include "platform/Tasks.h"
#include "tests/support/FakeRunLoop.h"

#include <map>

// A pipe whose other end a test plays.
class FakePipe final : public platform::Pipe {
public:
    // What went through, for the time after the pipe.
    struct Traffic {
        std::string written;
        bool ended = false;
        bool refused = false;
    };

    void readToEndInBackground(std::shared_ptr<platform::RunLoop> loop,
                               std::function<void(std::string)> done) override {
        loop_ = std::static_pointer_cast<FakeRunLoop>(loop);
        done_ = std::move(done);
    }

    bool write(std::string_view bytes) override {
        if (traffic->refused)
            return false;
        traffic->written += bytes;
        return true;
    }

    void closeWriting() override {
        traffic->ended = true;
        if (ended)
            ended();
    }

    // Every writer has closed the pipe.
    void deliver(const std::string& output) {
        loop_->post([done = std::move(done_), output] { done(output); });
    }

    std::shared_ptr<Traffic> traffic = std::make_shared<Traffic>();
    std::function<void()> ended;

private:
    std::shared_ptr<FakeRunLoop> loop_;
    std::function<void(std::string)> done_;
};

// How a tool behaves.
struct FakeTool {
    enum class Ending { StatusThenOutput, OutputThenStatus, OutputAlone };

    std::string output = "";
    int status = 0;
    Ending ending = Ending::OutputThenStatus;
    bool refusesInput = false;
    bool waitsForEndOfInput = false;
    std::function<void(const platform::TaskDescription& task)> effect = nullptr;
};

// Child processes out of a table. A tool that is not in it cannot be started.
class FakeTasks final : public platform::Tasks {
public:
    struct Launch {
        platform::TaskDescription task; // without its pipes
        std::shared_ptr<FakePipe::Traffic> input;
        std::weak_ptr<platform::Pipe> inputPipe;
    };

    std::shared_ptr<platform::Pipe> makePipe() override {
        return pipesLeft-- > 0 ? std::make_shared<FakePipe>() : nullptr;
    }

    bool launch(const platform::TaskDescription& task, std::shared_ptr<platform::RunLoop> loop,
                std::function<void(int status)> didTerminate) override {
        const auto found = tools.find(task.path);
        if (found == tools.end())
            return false;
        const FakeTool& tool = found->second;
        auto& input = static_cast<FakePipe&>(*task.standardInput);
        input.traffic->refused = tool.refusesInput;
        launches.push_back({{task.path, task.arguments, task.directory, {}, {}}, input.traffic, task.standardInput});
        if (tool.effect)
            tool.effect(task);
        const std::weak_ptr<platform::Pipe> output = task.standardOutput;
        const auto end = [tool, output, loop = std::static_pointer_cast<FakeRunLoop>(loop),
                          didTerminate = std::move(didTerminate)] {
            const auto postStatus = [&] { loop->post([=] { didTerminate(tool.status); }); };
            if (tool.ending == FakeTool::Ending::StatusThenOutput)
                postStatus();
            if (const auto pipe = output.lock())
                static_cast<FakePipe&>(*pipe).deliver(tool.output);
            if (tool.ending == FakeTool::Ending::OutputThenStatus)
                postStatus();
        };
        input.ended = tool.waitsForEndOfInput ? end : std::function<void()>();
        if (!tool.waitsForEndOfInput)
            end();
        return true;
    }

    bool launchDetached(const platform::TaskDescription& task) override {
        detached.push_back(task);
        return tools.count(task.path) > 0;
    }

    std::map<std::string, FakeTool> tools; // by path
    std::vector<Launch> launches;
    std::vector<platform::TaskDescription> detached;
    int pipesLeft = 1000;
};
