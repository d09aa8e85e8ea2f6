#include "platform/posix/PosixPipe.h"

#include "platform/posix/PosixRunLoop.h"

#include <utility>

namespace platform {

std::shared_ptr<PosixPipe> PosixPipe::make() {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
    if (!openPipe(readEnd, writeEnd))
        return nullptr;
    return std::make_shared<PosixPipe>(std::move(readEnd), std::move(writeEnd));
}

PosixPipe::PosixPipe(FileDescriptor readEnd, FileDescriptor writeEnd)
    : readEnd_(std::make_shared<FileDescriptor>(std::move(readEnd))),
      writeEnd_(std::make_shared<FileDescriptor>(std::move(writeEnd))) {}

void PosixPipe::readToEndInBackground(std::shared_ptr<RunLoop> loop, std::function<void(std::string)> done) {
    const auto reader = std::dynamic_pointer_cast<PosixRunLoop>(loop);
    const std::shared_ptr<FileDescriptor> end = readEnd();
    if (reader && end)
        reader->readToEnd(end, std::move(done));
}

bool PosixPipe::write(std::string_view bytes) {
    const std::shared_ptr<FileDescriptor> end = writeEnd();
    return end && writeAll(end->get(), bytes);
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
