#pragma once

#include "platform/Tasks.h"

#include <memory>

namespace platform {

class TaskMonitor;

// Child processes of the calling thread, with one thread of its own that watches them all. Pipes and children may
// outlive it; what they still do is not reported then.
class PosixTasks : public Tasks {
public:
    // Throws std::system_error when the system has no thread or descriptor left.
    PosixTasks();
    ~PosixTasks() override;
    PosixTasks(const PosixTasks&) = delete;
    PosixTasks& operator=(const PosixTasks&) = delete;

    std::shared_ptr<Pipe> makePipe() override;
    bool launch(const TaskDescription& task, std::shared_ptr<RunLoop> loop,
                std::function<void(int status)> didTerminate) override;
    bool launchDetached(const TaskDescription& task) override;

private:
    std::shared_ptr<TaskMonitor> monitor_;
};

// Makes writing to a pipe that nobody reads an ordinary error for the whole process. Children get the default back.
void ignoreBrokenPipes();

} // namespace platform
