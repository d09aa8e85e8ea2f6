#include "platform/posix/PosixTasks.h"

#include "platform/posix/ArgumentVector.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/ChildWaiter.h"
#include "platform/posix/PosixPipe.h"
#include "platform/posix/PosixRunLoop.h"

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
    ChildWaiter waiter;
    if (!inputEnd || !outputEnd || !waiter.isOpen())
        return false;
    const pid_t child = spawnChild(task, inputEnd->get(), outputEnd->get());
    if (child < 0)
        return false;
    FileDescriptor ending = waiter.start(child);
    if (!ending.isOpen())
        return false;
    // Only the child holds these ends from now on: its end is the end of the output, and of anybody reading the input.
    input->closeReading();
    output->closeWriting();
    reader->readToEnd(std::make_shared<FileDescriptor>(std::move(ending)),
                      [end = std::move(didTerminate)](const std::string& bytes) { end(ChildWaiter::status(bytes)); });
    return true;
}

bool PosixTasks::launchDetached(const TaskDescription& task) {
    return isExpressible(task) && spawnDetached(task);
}

} // namespace platform
