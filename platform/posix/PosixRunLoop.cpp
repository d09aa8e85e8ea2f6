#include "platform/posix/PosixRunLoop.h"

#include <algorithm>
#include <array>
#include <poll.h>
#include <utility>

namespace platform {

bool PosixRunLoop::runOnce(std::chrono::milliseconds limit) {
    using Clock = std::chrono::steady_clock;
    using std::chrono::milliseconds;
    // The clock cannot count the longest limits.
    const auto deadline = Clock::now() + std::min<milliseconds>(limit, std::chrono::hours(24));
    auto left = milliseconds::zero();
    do {
        left = std::max(std::chrono::ceil<milliseconds>(deadline - Clock::now()), milliseconds::zero());
        readWhatComes(left);
        if (runEnded())
            return true;
    } while (left > milliseconds::zero());
    return false;
}

void PosixRunLoop::readToEnd(std::shared_ptr<const FileDescriptor> readEnd, std::function<void(std::string)> done) {
    readers_.push_back({std::move(readEnd), std::move(done), {}, false});
}

bool PosixRunLoop::runEnded() {
    const auto ended =
        std::find_if(readers_.begin(), readers_.end(), [](const Reader& reader) { return reader.ended; });
    if (ended == readers_.end())
        return false;
    Reader reader = std::move(*ended);
    readers_.erase(ended);
    reader.done(std::move(reader.bytes));
    return true;
}

void PosixRunLoop::readWhatComes(std::chrono::milliseconds limit) {
    std::vector<pollfd> pipes;
    pipes.reserve(readers_.size());
    bool hasEnded = false;
    for (const Reader& reader : readers_) {
        pipes.push_back({reader.readEnd->get(), POLLIN, 0});
        hasEnded = hasEnded || reader.ended;
    }
    const int wait = hasEnded ? 0 : static_cast<int>(limit.count());
    if (::poll(pipes.data(), static_cast<nfds_t>(pipes.size()), wait) <= 0)
        return;
    for (std::size_t index = 0; index < pipes.size(); ++index)
        if (pipes[index].revents != 0 && !readers_[index].ended)
            read(readers_[index]);
}

// Waits for nothing: only called for what can be read.
void PosixRunLoop::read(Reader& reader) {
    std::array<char, 65536> buffer;
    const ssize_t count = readSome(reader.readEnd->get(), buffer.data(), buffer.size());
    if (count > 0)
        reader.bytes.append(buffer.data(), static_cast<std::size_t>(count));
    else
        reader.ended = true;
}

} // namespace platform
