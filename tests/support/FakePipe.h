#pragma once

#include "platform/Tasks.h"

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
        loop_ = std::move(loop);
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
    std::shared_ptr<platform::RunLoop> loop_;
    std::function<void(std::string)> done_;
};
