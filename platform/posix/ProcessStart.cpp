#include "platform/posix/ProcessStart.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace platform {

namespace {

// The window, the session bus, a transfer and a copy of a deep tree together stay below half of it.
constexpr rlim_t neededFiles = 64;
// More are of no use, and some libraries look at each one that there might be.
constexpr rlim_t usualFiles = 1024;

constexpr std::array<int, 6> parentsChoice{SIGHUP, SIGINT, SIGQUIT, SIGTSTP, SIGTTIN, SIGTTOU};
constexpr std::array<int, 2> errorsInstead{SIGPIPE, SIGXFSZ};

void setAction(int number, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    ::sigaction(number, &action, nullptr);
}

void putSignalsInOrder() {
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action {};
        if (::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN &&
            std::find(parentsChoice.begin(), parentsChoice.end(), number) == parentsChoice.end())
            setAction(number, SIG_DFL);
    }
    for (const int number : errorsInstead)
        setAction(number, SIG_IGN);
    sigset_t none{};
    sigemptyset(&none);
    ::pthread_sigmask(SIG_SETMASK, &none, nullptr);
}

// The next files to be opened would get the numbers of streams that are closed. Whether all three are there.
bool openStandardStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (::fcntl(stream, F_GETFD) < 0 && errno == EBADF && ::open("/dev/null", O_RDWR) != stream)
            return false;
    return true;
}

rlim_t raiseFileLimit() {
    struct rlimit files {};
    if (::getrlimit(RLIMIT_NOFILE, &files) != 0)
        return usualFiles;
    if (files.rlim_cur < usualFiles) {
        const rlim_t before = files.rlim_cur;
        files.rlim_cur = std::min(usualFiles, files.rlim_max);
        if (::setrlimit(RLIMIT_NOFILE, &files) != 0)
            return before;
    }
    return files.rlim_cur;
}

} // namespace

std::optional<std::string> prepareProcess() {
    putSignalsInOrder();
    const rlim_t files = raiseFileLimit();
    if (!openStandardStreams())
        return "/dev/null cannot be opened";
    if (files < neededFiles)
        return "the system allows " + std::to_string(files) + " open files, " + std::to_string(neededFiles) +
               " are needed";
    return std::nullopt;
}

} // namespace platform
