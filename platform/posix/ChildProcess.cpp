#include "platform/posix/ChildProcess.h"

#include "platform/posix/ArgumentVector.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/SystemCalls.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>

namespace platform {

namespace {

// Everything between fork and exec is prepared before, because a forked thread may only make plain system calls: other
// threads' locks stay locked in the child for ever.
struct Preparation {
    const char* path = nullptr;
    char* const* arguments = nullptr;
    char* const* variables = nullptr;
    // Null for this process's own.
    const char* directory = nullptr;
    std::array<int, 3> streams{-1, -1, -1};
    bool isOwnJob = true;
    bool endsWithStarter = false;
    pid_t starter = 0;
    // Closes by itself when the program takes over; an error number is written to it if that fails.
    int report = -1;
};

// What this program itself ignores is its own affair.
bool isIgnoredByJob(int number) {
    struct sigaction action {};
    return number != SIGPIPE && number != SIGXFSZ && number != SIGCHLD && ::sigaction(number, nullptr, &action) == 0 &&
           action.sa_handler == SIG_IGN;
}

bool setDefaultSignals(bool isOwnJob) {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    // Those that no program may change, and those of the library itself, say no.
    for (int number = 1; number < NSIG; ++number)
        if (isOwnJob || !isIgnoredByJob(number))
            ::sigaction(number, &action, nullptr);
    sigset_t none{};
    sigemptyset(&none);
    return ::sigprocmask(SIG_SETMASK, &none, nullptr) == 0;
}

bool putStreamsInPlace(const std::array<int, 3>& streams) {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        int source = streams[static_cast<std::size_t>(stream)];
        if (source < 0)
            source = ::open("/dev/null", O_RDWR | O_CLOEXEC);
        // A descriptor that is in its place already keeps its flag.
        if (::dup2(source, stream) < 0 || ::fcntl(stream, F_SETFD, 0) != 0)
            return false;
    }
    return true;
}

[[noreturn]] void fail(const Preparation& preparation) {
    const int reason = errno;
    [[maybe_unused]] const ssize_t written = ::write(preparation.report, &reason, sizeof reason);
    ::_exit(EXIT_FAILURE);
}

[[noreturn]] void becomeProgram(const Preparation& preparation) {
    if (!putStreamsInPlace(preparation.streams) ||
        (preparation.directory != nullptr && ::chdir(preparation.directory) != 0) ||
        !setDefaultSignals(preparation.isOwnJob))
        fail(preparation);
    // Our own descriptors close by themselves; those of libraries may not.
    closeInPrograms();
    ::execve(preparation.path, preparation.arguments, preparation.variables);
    fail(preparation);
}

[[noreturn]] void becomeChild(const Preparation& preparation) {
    if (preparation.isOwnJob && ::setpgid(0, 0) != 0)
        fail(preparation);
    if (preparation.endsWithStarter) {
        endWithStarter();
        if (::getppid() != preparation.starter)
            ::_exit(EXIT_FAILURE);
    }
    becomeProgram(preparation);
}

// The process in between ends at once, so that the program is handed to the system's first process.
[[noreturn]] void becomeIntermediate(const Preparation& preparation) {
    if (::setsid() < 0)
        fail(preparation);
    const pid_t program = forkAgain();
    if (program < 0)
        fail(preparation);
    if (program == 0)
        becomeProgram(preparation);
    ::_exit(EXIT_SUCCESS);
}

// Blocks all signals, so that no handler of this program runs in a forked process.
class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t all{};
        sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~BlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t before_{};
};

// Nothing comes when the program took over.
bool reportedFailure(const FileDescriptor& report) {
    int reason = 0;
    return readSome(report.get(), &reason, sizeof reason) != 0;
}

// The child, which has not failed to become the program, whether itself or by one of its own; or -1.
pid_t forkInto(void (*become)(const Preparation&), Preparation preparation) {
    FileDescriptor report;
    FileDescriptor reportEnd;
    if (!openPipe(report, reportEnd))
        return -1;
    preparation.report = reportEnd.get();
    pid_t child = -1;
    {
        const BlockedSignals blocked;
        child = ::fork();
        if (child == 0)
            become(preparation);
    }
    reportEnd.close();
    if (child > 0 && reportedFailure(report)) {
        waitForChild(child);
        return -1;
    }
    return child;
}

} // namespace

pid_t spawnChild(const TaskDescription& task, const ChildStart& start) {
    const ArgumentVector arguments(task);
    std::optional<ArgumentVector> variables;
    if (start.environment)
        variables.emplace(*start.environment);
    return forkInto(becomeChild, {.path = task.path.c_str(),
                                  .arguments = arguments.get(),
                                  .variables = variables ? variables->get() : environment(),
                                  .directory = task.directory ? task.directory->c_str() : nullptr,
                                  .streams = {start.standardInput, start.standardOutput, start.standardError},
                                  .isOwnJob = start.isOwnJob,
                                  .endsWithStarter = start.endsWithStarter,
                                  .starter = ::getpid()});
}

bool spawnDetached(const TaskDescription& task) {
    const ArgumentVector arguments(task);
    const std::string directory = task.directory.value_or("/");
    const pid_t intermediate = forkInto(becomeIntermediate, {.path = task.path.c_str(),
                                                             .arguments = arguments.get(),
                                                             .variables = environment(),
                                                             .directory = directory.c_str()});
    if (intermediate > 0)
        waitForChild(intermediate);
    return intermediate > 0;
}

std::optional<int> waitForChild(pid_t child) {
    int status = 0;
    pid_t ended = 0;
    do
        ended = ::waitpid(child, &status, 0);
    while (ended < 0 && errno == EINTR);
    return ended == child ? std::optional(status) : std::nullopt;
}

} // namespace platform
