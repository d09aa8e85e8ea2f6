#include "platform/linux/hdiutil/Interruption.h"

#include "platform/linux/hdiutil/Failure.h"
#include "platform/posix/ChildProcess.h"

#include <ctime>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace hdiutil {
namespace {

// A program started in the background or under nohup has these ignored, and they stay without effect.
void addUnlessIgnored(sigset_t& signals, int signal) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
        ::sigaddset(&signals, signal);
}

sigset_t terminatingSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGTERM);
    addUnlessIgnored(signals, SIGINT);
    addUnlessIgnored(signals, SIGHUP);
    return signals;
}

} // namespace

void deferInterruptions() {
    const sigset_t signals = terminatingSignals();
    ::sigprocmask(SIG_BLOCK, &signals, nullptr);
}

Interruption::Interruption() : parent_(::getppid()) {
    deferInterruptions();
    sigset_t childSignal;
    ::sigemptyset(&childSignal);
    ::sigaddset(&childSignal, SIGCHLD);
    ::sigprocmask(SIG_BLOCK, &childSignal, nullptr);

    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    requested_ = isParentGone();
}

void Interruption::check() {
    if (isPending())
        throw Failure("interrupted");
}

int Interruption::waitForChild(pid_t child) {
    sigset_t signals = terminatingSignals();
    ::sigaddset(&signals, SIGCHLD);
    int status = 0;
    while (!requested_) {
        if (::waitpid(child, &status, WNOHANG) == child)
            return status;
        const int signal = ::sigwaitinfo(&signals, nullptr);
        if (signal > 0 && signal != SIGCHLD)
            requested_ = true;
    }
    ::kill(child, SIGKILL);
    platform::waitForChild(child);
    throw Failure("interrupted");
}

bool Interruption::isParentGone() const {
    constexpr timespec pause{0, 10'000'000};
    constexpr int mostPauses = 100;
    // The signal comes with the end of the parent's thread, a moment before the process itself is gone.
    for (int pauses = 0; requested_ && ::getppid() == parent_ && pauses < mostPauses; ++pauses)
        ::nanosleep(&pause, nullptr);
    return ::getppid() != parent_;
}

bool Interruption::isPending() {
    const sigset_t signals = terminatingSignals();
    const timespec atOnce{};
    if (!requested_ && ::sigtimedwait(&signals, nullptr, &atOnce) > 0)
        requested_ = true;
    return requested_;
}

} // namespace hdiutil
