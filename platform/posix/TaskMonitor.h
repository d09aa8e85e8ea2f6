#pragma once

#include "platform/Threads.h"
#include "platform/posix/FileDescriptor.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <poll.h>

namespace platform {

// One thread that reads the outputs of all children and sees them end, and posts both. It blocks for nobody and runs
// none of the callbacks itself. Any thread may add.
class TaskMonitor {
public:
    // Throws std::system_error when the system has no descriptor or thread left.
    TaskMonitor();
    // Forgets what has not ended by then.
    ~TaskMonitor();
    TaskMonitor(const TaskMonitor&) = delete;
    TaskMonitor& operator=(const TaskMonitor&) = delete;

    // Reads until every writer has closed the pipe.
    void addReader(std::shared_ptr<FileDescriptor> readEnd, std::shared_ptr<RunLoop> loop,
                   std::function<void(std::string)> done);

    // Waits for the child of that process descriptor.
    void addChild(FileDescriptor process, std::shared_ptr<RunLoop> loop, std::function<void(int)> didTerminate);

private:
    struct Reader {
        std::shared_ptr<FileDescriptor> readEnd;
        std::shared_ptr<RunLoop> loop;
        std::function<void(std::string)> done;
        std::string bytes;
        bool ended = false;
    };
    struct Child {
        FileDescriptor process;
        std::shared_ptr<RunLoop> loop;
        std::function<void(int)> didTerminate;
    };

    void run();
    bool takeAdded();
    std::vector<pollfd> watched() const;
    void wake() const;

    static void read(Reader& reader);
    // These post the end, if it has come.
    static bool postEnd(Child& child);
    static bool postEnd(Reader& reader);

    FileDescriptor wakeUp_;
    std::mutex mutex_;
    bool stopped_ = false;
    std::vector<Child> addedChildren_;
    std::vector<Reader> addedReaders_;
    // These are the thread's own.
    std::vector<Child> children_;
    std::vector<Reader> readers_;
    std::thread thread_;
};

} // namespace platform
