#include "platform/posix/ArgumentVector.h"
#include "platform/posix/ChildProcess.h"
#include "platform/posix/SystemCalls.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {

namespace {

// Everything between fork and exec is prepared before, because a forked thread may only make plain system calls: other
// threads' locks stay locked in the child for ever.
struct Preparation {
    const char* path = nullptr;
    char* const* arguments = nullptr;
    const char* directory = nullptr;
    // Closes by itself when the program takes over; an error number is written to it if that fails.
    int report = -1;
};

bool setDefaultSignals() {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    // Those that no program may change, and those of the library itself, say no.
    for (int number = 1; number < NSIG; ++number)
        ::sigaction(number, &action, nullptr);
    sigset_t none{};
    sigemptyset(&none);
    return ::sigprocmask(SIG_SETMASK, &none, nullptr) == 0;
}

bool leadStreamsNowhere() {
    const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nowhere < 0)
        return false;
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::dup2(nowhere, stream) < 0)
            return false;
        // Where a stream was closed before, the descriptor is in its place already and keeps its flag.
        if (::fcntl(stream, F_SETFD, 0) != 0)
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
    if (!leadStreamsNowhere() || ::chdir(preparation.directory) != 0 || !setDefaultSignals())
        fail(preparation);
    // Our own descriptors close by themselves; those of libraries may not.
    closeInPrograms();
    ::execve(preparation.path, preparation.arguments, environment());
    fail(preparation);
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
    ssize_t count = 0;
    do
        count = ::read(report.get(), &reason, sizeof reason);
    while (count < 0 && errno == EINTR);
    return count != 0;
}

} // namespace

bool spawnDetached(const TaskDescription& task) {
    const ArgumentVector arguments(task);
    const std::string directory = task.directory.value_or("/");
    FileDescriptor report;
    FileDescriptor reportEnd;
    if (!openPipe(report, reportEnd))
        return false;
    const Preparation preparation{task.path.c_str(), arguments.get(), directory.c_str(), reportEnd.get()};
    pid_t intermediate = 0;
    {
        const BlockedSignals blocked;
        intermediate = ::fork();
        if (intermediate == 0)
            becomeIntermediate(preparation);
    }
    reportEnd.close();
    if (intermediate < 0)
        return false;
    const bool failed = reportedFailure(report);
    while (::waitpid(intermediate, nullptr, 0) < 0 && errno == EINTR) {
    }
    return !failed;
}

} // namespace platform
