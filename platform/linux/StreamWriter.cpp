#include "platform/linux/StreamWriter.h"

#include "platform/linux/Terminal.h"
#include "platform/posix/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds moment{100};
constexpr std::size_t keptAtMost = std::size_t{256} << 10;

// The same pipe or terminal once more, without waiting: other programs share the stream itself, and its flags.
FileDescriptor reopened(int descriptor) {
    struct stat facts {};
    if (::fstat(descriptor, &facts) != 0 || !(S_ISFIFO(facts.st_mode) || S_ISCHR(facts.st_mode)))
        return {};
    const std::string name = "/proc/self/fd/" + std::to_string(descriptor);
    return FileDescriptor(::open(name.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

bool waitUntilWritable(int descriptor, std::chrono::milliseconds patience) {
    struct pollfd writable {
        descriptor, POLLOUT, 0
    };
    return ::poll(&writable, 1, static_cast<int>(std::max<std::int64_t>(patience.count(), 0))) > 0;
}

// Where reopening is not possible or not needed.
ssize_t writeInPlace(int descriptor, std::string_view bytes) {
    const ssize_t sent = ::send(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent >= 0 || errno != ENOTSOCK)
        return sent;
    if (!waitUntilWritable(descriptor, {})) {
        errno = EAGAIN;
        return -1;
    }
    return ::write(descriptor, bytes.data(), std::min<std::size_t>(bytes.size(), PIPE_BUF));
}

} // namespace

void StreamWriter::write(std::string_view bytes) {
    if (kept_.size() + bytes.size() > keptAtMost && !kept_.empty()) {
        hasLeftOut_ = true;
    } else {
        if (std::exchange(hasLeftOut_, false))
            kept_ += "[lines that nobody took were left out]\n";
        kept_ += bytes;
    }
    isStalled_ = !flush(isStalled_ ? std::chrono::milliseconds() : moment);
}

bool StreamWriter::flush(std::chrono::milliseconds patience) {
    if (kept_.empty())
        return true;
    const terminal::KeepRunning keepRunning;
    const FileDescriptor own = reopened(descriptor_);
    const auto end = Clock::now() + patience;
    std::string_view rest = kept_;
    while (!rest.empty()) {
        const ssize_t written =
            own.isOpen() ? ::write(own.get(), rest.data(), rest.size()) : writeInPlace(descriptor_, rest);
        if (written > 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (written < 0 && errno == EAGAIN) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
            if (left.count() <= 0 || !waitUntilWritable(own.isOpen() ? own.get() : descriptor_, left))
                break;
        } else if (written == 0 || errno != EINTR) {
            rest = {};
        }
    }
    kept_.erase(0, kept_.size() - rest.size());
    return kept_.empty();
}

} // namespace platform
