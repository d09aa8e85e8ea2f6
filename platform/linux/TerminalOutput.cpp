#include "platform/linux/TerminalOutput.h"

#include "foundation/MessageText.h"
#include "platform/linux/Terminal.h"

#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

bool areSameTerminal(int first, int second) {
    struct stat one {};
    struct stat other {};
    return terminal::isTerminal(first) && terminal::isTerminal(second) && ::fstat(first, &one) == 0 &&
           ::fstat(second, &other) == 0 && one.st_rdev == other.st_rdev;
}

constexpr const char* toLineStart = "\r\x1b[K";

} // namespace

TerminalOutput::TerminalOutput() : output_(STDOUT_FILENO), errors_(STDERR_FILENO) {}

TerminalOutput& TerminalOutput::shared() {
    static auto* const output = new TerminalOutput;
    return *output;
}

void TerminalOutput::show(int descriptor, const std::string& text, std::string_view linesAbove) {
    const std::lock_guard lock(mutex_);
    std::string bytes = toLineStart;
    if (terminal::isPlain(descriptor))
        bytes = shown_.empty() ? "" : "\n";
    descriptor_ = descriptor;
    shown_ = text;
    put(descriptor, bytes + std::string(linesAbove) + text);
}

void TerminalOutput::clear() {
    const std::lock_guard lock(mutex_);
    if (!shown_.empty()) {
        put(descriptor_, erasure());
        shown_.clear();
    }
}

void TerminalOutput::forget() {
    const std::lock_guard lock(mutex_);
    shown_.clear();
}

void TerminalOutput::write(int descriptor, std::string_view lines) {
    const std::lock_guard lock(mutex_);
    if (shown_.empty() || !areSameTerminal(descriptor, descriptor_))
        put(descriptor, std::string(lines));
    else
        put(descriptor, erasure() + std::string(lines) + shown_);
}

bool TerminalOutput::flush(std::chrono::milliseconds patience) {
    const std::lock_guard lock(mutex_);
    const bool outputIsTaken = output_.flush(patience);
    return errors_.flush(patience) && outputIsTaken;
}

void TerminalOutput::put(int descriptor, const std::string& bytes) {
    StreamWriter& writer = descriptor == STDERR_FILENO ? errors_ : output_;
    // A file or another program takes all letters, whatever this program's locale is.
    const bool onlyAscii = terminal::isTerminal(descriptor) && terminal::isPlain(descriptor);
    writer.write(onlyAscii ? foundation::asciiText(bytes) : bytes);
}

std::string TerminalOutput::erasure() const {
    return terminal::isPlain(descriptor_) ? "\n" : toLineStart;
}

} // namespace platform
