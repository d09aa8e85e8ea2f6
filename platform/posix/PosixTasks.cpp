#include "platform/posix/PosixTasks.h"

#include "platform/posix/ArgumentVector.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/PosixPipe.h"
#include "platform/posix/PosixRunLoop.h"
#include "platform/posix/WatchedChild.h"

#include <csignal>
#include <utility>

namespace platform {

void ignoreBrokenPipes() {
    struct sigaction action {};
    action.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &action, nullptr);
}

PosixTasks::PosixTasks() {
    ignoreBrokenPipes();
}

std::shared_ptr<Pipe> PosixTasks::makePipe() {
    return PosixPipe::make();
}

bool PosixTasks::launch(const TaskDescription& task, std::shared_ptr<RunLoop> loop,
                        std::function<void(int status)> didTerminate) {
    const auto input = std::dynamic_pointer_cast<PosixPipe>(task.standardInput);
    const auto output = std::dynamic_pointer_cast<PosixPipe>(task.standardOutput);
    const auto reader = std::dynamic_pointer_cast<PosixRunLoop>(loop);
    if (!input || !output || !reader || !isExpressible(task))
        return false;
    const auto inputEnd = input->readEnd();
    const auto outputEnd = output->writeEnd();
    if (!inputEnd || !outputEnd)
        return false;
    const ChildStart start{.standardInput = inputEnd->get(), .standardOutput = outputEnd->get()};
    if (!startWatchedChild(task, start, *reader, std::move(didTerminate)))
        return false;
    // Only the child holds these ends from now on: its end is the end of the output, and of anybody reading the input.
    input->closeReading();
    output->closeWriting();
    return true;
}

bool PosixTasks::launchDetached(const TaskDescription& task) {
    return isExpressible(task) && spawnDetached(task);
}

} // namespace platform
