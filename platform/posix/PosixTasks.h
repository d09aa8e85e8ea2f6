#pragma once

#include "platform/Tasks.h"

namespace platform {

// Child processes of the calling thread. Pipes and children may outlive it.
class PosixTasks : public Tasks {
public:
    PosixTasks();

    std::shared_ptr<Pipe> makePipe() override;
    bool launch(const TaskDescription& task, std::shared_ptr<RunLoop> loop,
                std::function<void(int status)> didTerminate) override;
    bool launchDetached(const TaskDescription& task) override;
};

// Makes writing to a pipe that nobody reads an ordinary error for the whole process. Children get the default back.
void ignoreBrokenPipes();

} // namespace platform
