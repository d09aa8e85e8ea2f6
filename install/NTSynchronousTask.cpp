#include "install/NTSynchronousTask.h"

#include "platform/Platform.h"

using namespace std::chrono_literals;

NTSynchronousTask::NTSynchronousTask()
    : mv_outputPipe(platform::current().tasks->makePipe()), mv_inputPipe(platform::current().tasks->makePipe()) {
    mv_task.standardInput = mv_inputPipe;
    mv_task.standardOutput = mv_outputPipe;
}

std::optional<std::string> NTSynchronousTask::task(const std::string& path, const std::optional<std::string>& directory,
                                                   const std::vector<std::string>& withArgs,
                                                   const std::optional<std::string>& input) {
    try {
        return runToEnd(path, directory, withArgs, input);
    } catch (...) {
        return std::nullopt;
    }
}

std::optional<std::string> NTSynchronousTask::runToEnd(const std::string& path,
                                                       const std::optional<std::string>& directory,
                                                       const std::vector<std::string>& withArgs,
                                                       const std::optional<std::string>& input) {
    const std::shared_ptr<NTSynchronousTask> runner(new NTSynchronousTask);
    if (!runner->mv_inputPipe || !runner->mv_outputPipe)
        return std::nullopt;
    if (!runner->run(path, directory, withArgs, input) || runner->mv_result != 0)
        return std::nullopt;
    return std::move(runner->mv_output);
}

bool NTSynchronousTask::run(const std::string& path, const std::optional<std::string>& directory,
                            const std::vector<std::string>& withArgs, const std::optional<std::string>& input) {
    mv_task.directory = directory;
    mv_task.path = path;
    mv_task.arguments = withArgs;
    const auto loop = platform::current().threads->makeRunLoop();
    if (!launch(loop))
        return true;
    if (input) {
        if (!mv_inputPipe->write(*input))
            return false;
        mv_inputPipe->closeWriting();
    }
    waitForOutput(*loop);
    waitForEndingTool(*loop);
    return true;
}

bool NTSynchronousTask::launch(const std::shared_ptr<platform::RunLoop>& loop) {
    // Notices that come after this call has ended find nobody.
    const std::weak_ptr<NTSynchronousTask> weak = weak_from_this();
    mv_outputPipe->readToEndInBackground(
        loop,
        [weak](std::string output) {
            if (const auto self = weak.lock())
                self->taskOutputAvailable(std::move(output));
        });
    return platform::current().tasks->launch(mv_task, loop, [weak](int status) {
        if (const auto self = weak.lock())
            self->taskDidTerminate(status);
    });
}

// Deliberate: the end of the output ends the wait, not the end of the tool, and nothing limits it as a whole.
void NTSynchronousTask::waitForOutput(platform::RunLoop& loop) const {
    while (!mv_done)
        loop.runOnce(1s);
}

// Deliberate: a tool that fails closes its output before its status can be known, by some microseconds or, on a machine
// with far more work than it can do, by most of a second. So the status gets a short wait; without it nine failures in
// ten would pass for successes. A tool that has closed its output and keeps running after that counts as a success.
void NTSynchronousTask::waitForEndingTool(platform::RunLoop& loop) const {
    constexpr auto grace = 5s;
    const auto deadline = std::chrono::steady_clock::now() + grace;
    while (!mv_terminated) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left <= 0ms || !loop.runOnce(left))
            return;
    }
}

void NTSynchronousTask::taskOutputAvailable(std::string output) {
    mv_output = std::move(output);
    mv_done = true;
}

void NTSynchronousTask::taskDidTerminate(int status) {
    mv_terminated = true;
    mv_result = status;
}
