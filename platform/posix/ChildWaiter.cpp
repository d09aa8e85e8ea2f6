#include "platform/posix/ChildWaiter.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <utility>

namespace platform {

namespace {

// What a child counts as that somebody else has waited for: not as a success.
constexpr int unknownStatus = -1;

int waitFor(pid_t child) {
    int status = 0;
    pid_t ended = 0;
    do
        ended = ::waitpid(child, &status, 0);
    while (ended < 0 && errno == EINTR);
    if (ended != child)
        return unknownStatus;
    return WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
}

} // namespace

ChildWaiter::ChildWaiter() {
    openPipe(ending_, report_);
}

FileDescriptor ChildWaiter::start(pid_t child) {
    try {
        std::thread([child, report = std::move(report_)] {
            const int status = waitFor(child);
            writeAll(report.get(), {reinterpret_cast<const char*>(&status), sizeof status});
        }).detach();
    } catch (const std::system_error&) {
        // Nobody would see its end, so it must not run.
        ::kill(child, SIGKILL);
        waitFor(child);
        return {};
    }
    return std::move(ending_);
}

int ChildWaiter::status(std::string_view bytes) {
    int status = unknownStatus;
    if (bytes.size() == sizeof status)
        std::memcpy(&status, bytes.data(), sizeof status);
    return status;
}

} // namespace platform
