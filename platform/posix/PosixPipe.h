#pragma once

#include "platform/Tasks.h"
#include "platform/posix/FileDescriptor.h"

#include <memory>
#include <mutex>

namespace platform {

// A pipe of the system. Any thread; an end that is in use stays open until that use is over.
class PosixPipe : public Pipe {
public:
    // Null when the system has none left.
    static std::shared_ptr<PosixPipe> make();

    PosixPipe(FileDescriptor readEnd, FileDescriptor writeEnd);

    // The loop must be a PosixRunLoop.
    void readToEndInBackground(std::shared_ptr<RunLoop> loop, std::function<void(std::string)> done) override;
    bool write(std::string_view bytes) override;
    void closeWriting() override;

    // The ends themselves, for a child to inherit. Null once closed.
    std::shared_ptr<FileDescriptor> readEnd();
    std::shared_ptr<FileDescriptor> writeEnd();

    // The writer sees that nobody reads any more.
    void closeReading();

private:
    std::mutex mutex_;
    std::shared_ptr<FileDescriptor> readEnd_;
    std::shared_ptr<FileDescriptor> writeEnd_;
};

} // namespace platform
