#include "platform/posix/PosixPipe.h"

#include "platform/posix/TaskMonitor.h"

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace platform {

std::shared_ptr<PosixPipe> PosixPipe::make(std::weak_ptr<TaskMonitor> monitor) {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
    if (!openPipe(readEnd, writeEnd))
        return nullptr;
    return std::make_shared<PosixPipe>(std::move(readEnd), std::move(writeEnd), std::move(monitor));
}

PosixPipe::PosixPipe(FileDescriptor readEnd, FileDescriptor writeEnd, std::weak_ptr<TaskMonitor> monitor)
    : monitor_(std::move(monitor)), readEnd_(std::make_shared<FileDescriptor>(std::move(readEnd))),
      writeEnd_(std::make_shared<FileDescriptor>(std::move(writeEnd))) {}

void PosixPipe::readToEndInBackground(std::shared_ptr<RunLoop> loop, std::function<void(std::string)> done) {
    const std::shared_ptr<FileDescriptor> end = readEnd();
    const std::shared_ptr<TaskMonitor> monitor = monitor_.lock();
    if (end && monitor)
        monitor->addReader(end, std::move(loop), std::move(done));
}

bool PosixPipe::write(std::string_view bytes) {
    const std::shared_ptr<FileDescriptor> end = writeEnd();
    if (!end)
        return false;
    while (!bytes.empty()) {
        const ssize_t count = ::write(end->get(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

void PosixPipe::closeWriting() {
    const std::lock_guard lock(mutex_);
    writeEnd_.reset();
}

void PosixPipe::closeReading() {
    const std::lock_guard lock(mutex_);
    readEnd_.reset();
}

std::shared_ptr<FileDescriptor> PosixPipe::readEnd() {
    const std::lock_guard lock(mutex_);
    return readEnd_;
}

std::shared_ptr<FileDescriptor> PosixPipe::writeEnd() {
    const std::lock_guard lock(mutex_);
    return writeEnd_;
}

} // namespace platform
