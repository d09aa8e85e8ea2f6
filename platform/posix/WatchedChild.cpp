#include "platform/posix/WatchedChild.h"

#include "platform/posix/FileDescriptor.h"

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

int endOf(pid_t child) {
    const std::optional<int> status = waitForChild(child);
    if (!status)
        return unknownStatus;
    return WIFEXITED(*status) ? WEXITSTATUS(*status) : WTERMSIG(*status);
}

int statusIn(const std::string& bytes) {
    int status = unknownStatus;
    if (bytes.size() == sizeof status)
        std::memcpy(&status, bytes.data(), sizeof status);
    return status;
}

} // namespace

bool startWatchedChild(const TaskDescription& task, const ChildStart& start, PosixRunLoop& loop,
                       std::function<void(int status)> didEnd) {
    // Made before the child is, so that this cannot fail any more then.
    FileDescriptor ending;
    FileDescriptor report;
    if (!openPipe(ending, report))
        return false;
    const pid_t child = spawnChild(task, start);
    if (child < 0)
        return false;
    try {
        std::thread([child, report = std::move(report)] {
            const int status = endOf(child);
            writeAll(report.get(), {reinterpret_cast<const char*>(&status), sizeof status});
        }).detach();
    } catch (const std::system_error&) {
        // Nobody would see its end, so it must not run.
        ::kill(child, SIGKILL);
        waitForChild(child);
        return false;
    }
    loop.readToEnd(std::make_shared<FileDescriptor>(std::move(ending)),
                   [end = std::move(didEnd)](const std::string& bytes) { end(statusIn(bytes)); });
    return true;
}

} // namespace platform
