#pragma once

#include "platform/Threads.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// A pipe between this process and one child. Whoever holds the last reference closes it.
class Pipe {
public:
    virtual ~Pipe() = default;

    // Reads while the loop runs, until every writer has closed the pipe; all bytes are one event of the loop then. Only
    // on the loop's thread.
    virtual void readToEndInBackground(std::shared_ptr<RunLoop> loop, std::function<void(std::string)> done) = 0;

    // Writes all bytes, waiting as long as the reader needs: what it writes itself meanwhile is not read, so an input
    // for a tool that answers at length must fit into a pipe, 64 KiB. False when nobody reads any more.
    virtual bool write(std::string_view bytes) = 0;

    // The reader sees the end of its input.
    virtual void closeWriting() = 0;
};

// What to run: an absolute path, arguments without the program's own name, and a working folder (absent: this one).
struct TaskDescription {
    std::string path;
    std::vector<std::string> arguments;
    std::optional<std::string> directory;
    std::shared_ptr<Pipe> standardInput;  // required by Tasks::launch
    std::shared_ptr<Pipe> standardOutput; // required by Tasks::launch
};

// Child processes. They inherit the three standard streams only, and the usual signal dispositions.
class Tasks {
public:
    virtual ~Tasks() = default;

    // A new pipe, or null when the system has none left.
    virtual std::shared_ptr<Pipe> makePipe() = 0;

    // Starts a child. False when it cannot be started. Its end is an event of the loop: the exit status, or the number
    // of the signal that ended it. Only on the loop's thread.
    virtual bool launch(const TaskDescription& task, std::shared_ptr<RunLoop> loop,
                        std::function<void(int status)> didTerminate) = 0;

    // Starts a program that nobody waits for, in a session of its own and never as a direct child: the step that runs a
    // tool with administrator rights takes whichever child ends first. Its streams lead nowhere. False when it cannot
    // be started.
    virtual bool launchDetached(const TaskDescription& task) = 0;
};

} // namespace platform
