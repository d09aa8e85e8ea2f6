#pragma once

#include "platform/Tasks.h"
#include "tests/support/FakeRunLoop.h"

#include <map>
#include <utility>

// A pipe whose other end a test plays.
class FakePipe final : public platform::Pipe {
public:
    ~FakePipe() override {
        if (ended)
            ended();
    }

    // What went through, for the time after the pipe.
    struct Traffic {
        std::string written;
        bool ended = false;
        bool refused = false;
    };

    // Who reads it, be the pipe gone or not.
    struct Reader {
        // Every writer has closed the pipe.
        void deliver(const std::string& output) const {
            loop->post([done = done, output] { done(output); });
        }

        std::shared_ptr<FakeRunLoop> loop;
        std::function<void(std::string)> done;
    };

    void readToEndInBackground(std::shared_ptr<platform::RunLoop> loop,
                               std::function<void(std::string)> done) override {
        *reader = {std::static_pointer_cast<FakeRunLoop>(loop), std::move(done)};
    }

    bool write(std::string_view bytes) override {
        if (traffic->refused)
            return false;
        traffic->written += bytes;
        return true;
    }

    void closeWriting() override {
        traffic->ended = true;
        if (const auto step = std::exchange(ended, nullptr))
            step();
    }

    const std::shared_ptr<Reader> reader = std::make_shared<Reader>();
    std::shared_ptr<Traffic> traffic = std::make_shared<Traffic>();
    std::function<void()> ended;
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
        const auto end = [tool, reader = static_cast<FakePipe&>(*task.standardOutput).reader,
                          loop = std::static_pointer_cast<FakeRunLoop>(loop), didTerminate = std::move(didTerminate)] {
            const auto postStatus = [&] { loop->post([=] { didTerminate(tool.status); }); };
            if (tool.ending == FakeTool::Ending::StatusThenOutput)
                postStatus();
            reader->deliver(tool.output);
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
