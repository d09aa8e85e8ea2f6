#pragma once

#include "platform/Threads.h"
#include "platform/posix/FileDescriptor.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform {

// A loop that waits for pipes. Everything on the thread that owns it.
class PosixRunLoop : public RunLoop {
public:
    bool runOnce(std::chrono::milliseconds limit) override;

    // Reads while the loop runs, until every writer has closed the pipe; all bytes are one event then.
    void readToEnd(std::shared_ptr<const FileDescriptor> readEnd, std::function<void(std::string)> done);

private:
    struct Reader {
        std::shared_ptr<const FileDescriptor> readEnd;
        std::function<void(std::string)> done;
        std::string bytes;
        bool ended = false;
    };

    bool runEnded();
    void readWhatComes(std::chrono::milliseconds limit);
    static void read(Reader& reader);

    std::vector<Reader> readers_;
};

} // namespace platform
