#include "StatusHolder.h"

#include "FileDescriptor.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace hdiutil {
namespace {

constexpr long graceNanoseconds = 20'000'000;

[[noreturn]] void hold(pid_t parent, int ready) {
    sigset_t parentEnded;
    ::sigemptyset(&parentEnded);
    ::sigaddset(&parentEnded, SIGUSR1);
    ::sigprocmask(SIG_BLOCK, &parentEnded, nullptr);
    ::prctl(PR_SET_PDEATHSIG, SIGUSR1);
    if (::getppid() != parent)
        ::_exit(0);

    ::dup2(ready, STDIN_FILENO);
    ::closefrom(STDERR_FILENO);
    const bool reported = ::write(STDIN_FILENO, "", 1) == 1;
    ::close(STDIN_FILENO);
    int signal = 0;
    if (reported && ::sigwait(&parentEnded, &signal) == 0) {
        const timespec grace{0, graceNanoseconds};
        ::nanosleep(&grace, nullptr);
    }
    ::_exit(0);
}

} // namespace

void holdOutputUntilExit() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return;
    const FileDescriptor readEnd(ends[0]);
    FileDescriptor writeEnd(ends[1]);
    const pid_t parent = ::getpid();
    const pid_t holder = ::fork();
    if (holder == 0)
        hold(parent, writeEnd.get());
    writeEnd = FileDescriptor();
    char byte = 0;
    while (holder > 0 && ::read(readEnd.get(), &byte, 1) < 0 && errno == EINTR) {
    }
}

} // namespace hdiutil
