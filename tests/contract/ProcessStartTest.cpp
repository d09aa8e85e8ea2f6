#include "platform/posix/ProcessStart.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Whether the condition holds in a process that was left with that, once it has put itself in order.
bool holdsAfter(const std::function<void()>& leave, const std::function<bool(bool isFit)>& condition) {
    const pid_t child = ::fork();
    if (child == 0) {
        leave();
        const bool isFit = !platform::prepareProcess().has_value();
        ::_exit(condition(isFit) ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status == 0;
}

bool isIgnored(int number) {
    struct sigaction action {};
    return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

TEST(ProcessStartTest, SignalsThatTheParentLeftOffWorkAgain) {
    const auto leave = [] {
        for (int number = 1; number < NSIG; ++number)
            std::signal(number, SIG_IGN);
        sigset_t all{};
        sigfillset(&all);
        ::sigprocmask(SIG_SETMASK, &all, nullptr);
    };
    EXPECT_TRUE(holdsAfter(
        leave,
        [](bool isFit) {
            sigset_t blocked{};
            ::sigprocmask(SIG_SETMASK, nullptr, &blocked);
            return isFit && !isIgnored(SIGCHLD) && !isIgnored(SIGTERM) && sigismember(&blocked, SIGTERM) == 0 &&
                   isIgnored(SIGHUP) && isIgnored(SIGINT);
        }))
        << "nohup and background jobs rely on the last two";
    EXPECT_TRUE(holdsAfter(
        [] {}, [](bool isFit) { return isFit && isIgnored(SIGPIPE) && isIgnored(SIGXFSZ) && !isIgnored(SIGINT); }));
}

TEST(ProcessStartTest, StandardStreamsAreOpenWhateverWasClosed) {
    for (const int closed : {1, 2, 4, 7}) {
        const auto leave = [closed] {
            for (int stream = 0; stream <= STDERR_FILENO; ++stream)
                if ((closed & (1 << stream)) != 0)
                    ::close(stream);
        };
        EXPECT_TRUE(holdsAfter(leave, [](bool isFit) { return isFit && ::open("/", O_RDONLY) > STDERR_FILENO; }))
            << closed;
    }
}

TEST(ProcessStartTest, TheLimitOfOpenFilesIsRaisedOrTold) {
    const auto limit = [](rlim_t soft, rlim_t hard) {
        return [soft, hard] {
            const struct rlimit files { soft, hard };
            ::setrlimit(RLIMIT_NOFILE, &files);
        };
    };
    EXPECT_TRUE(holdsAfter(limit(5, 200), [](bool isFit) {
        struct rlimit files {};
        ::getrlimit(RLIMIT_NOFILE, &files);
        return isFit && files.rlim_cur == 200;
    }));
    for (const rlim_t few : {0, 3, 16})
        EXPECT_TRUE(holdsAfter(limit(few, few), [](bool isFit) { return !isFit; })) << few;
}

} // namespace
