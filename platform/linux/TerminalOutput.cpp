#include "platform/linux/TerminalOutput.h"

#include "foundation/Text.h"

#include <algorithm>
#include <cerrno>

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

void writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            struct pollfd writable {
                descriptor, POLLOUT, 0
            };
            ::poll(&writable, 1, -1);
        } else if (errno != EINTR) {
            return;
        }
    }
}

bool areSameTerminal(int first, int second) {
    struct stat one {};
    struct stat other {};
    return ::isatty(first) == 1 && ::isatty(second) == 1 && ::fstat(first, &one) == 0 && ::fstat(second, &other) == 0 &&
           one.st_rdev == other.st_rdev;
}

} // namespace

std::string printableText(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of("\n\t"), text.size());
        result += foundation::visible(text.substr(0, end));
        result += text.substr(end, 1);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

TerminalOutput& TerminalOutput::shared() {
    static auto* const output = new TerminalOutput;
    return *output;
}

void TerminalOutput::show(int descriptor, const std::string& text) {
    const std::lock_guard lock(mutex_);
    std::string bytes = '\r' + text;
    if (shown_.size() > text.size()) {
        const std::size_t rest = shown_.size() - text.size();
        bytes += std::string(rest, ' ') + std::string(rest, '\b');
    }
    descriptor_ = descriptor;
    shown_ = text;
    writeAll(descriptor, bytes);
}

void TerminalOutput::clear() {
    const std::lock_guard lock(mutex_);
    if (!shown_.empty()) {
        writeAll(descriptor_, erasure());
        shown_.clear();
    }
}

void TerminalOutput::forget() {
    const std::lock_guard lock(mutex_);
    shown_.clear();
}

void TerminalOutput::write(int descriptor, std::string_view lines) {
    const std::lock_guard lock(mutex_);
    if (shown_.empty() || !areSameTerminal(descriptor, descriptor_)) {
        writeAll(descriptor, lines);
        return;
    }
    writeAll(descriptor, erasure() + std::string(lines) + shown_);
}

std::string TerminalOutput::erasure() const {
    return '\r' + std::string(shown_.size(), ' ') + '\r';
}

} // namespace platform
