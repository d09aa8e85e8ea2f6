#include "platform/cocoa/CocoaApplication.h"
#include "platform/cocoa/CocoaThreads.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <utility>

using platform::CocoaApplication;
using platform::CocoaThreads;
using platform::TerminateReply;

namespace {

// Answers quit requests as it was told to, and writes what happens to standard error.
class ScriptedDelegate : public platform::ApplicationDelegate {
public:
    struct Answer {
        TerminateReply reply;
        // Done while the question is being answered.
        std::function<void()> meanwhile;
    };

    explicit ScriptedDelegate(std::function<void()> launched) : launched_(std::move(launched)) {}
    void add(
        TerminateReply reply, std::function<void()> meanwhile = [] {}) {
        answers_.push_back({reply, std::move(meanwhile)});
    }

    void applicationDidFinishLaunching() override {
        std::fputs("launched ", stderr);
        launched_();
    }
    TerminateReply applicationShouldTerminate() override {
        std::fputs("asked ", stderr);
        if (answers_.empty())
            std::_Exit(9);
        const Answer answer = std::exchange(answers_.front(), {});
        answers_.pop_front();
        answer.meanwhile();
        return answer.reply;
    }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    void showHelp() override {}

private:
    std::function<void()> launched_;
    std::deque<Answer> answers_;
};

[[noreturn]] void end() {
    std::fputs("end", stderr);
    std::_Exit(0);
}

// The whole cycle: Later, then Continue, then a second request of its own, Later, then Quit.
void askTwiceAndQuit() {
    CocoaApplication application;
    CocoaThreads threads;
    const auto reply = [&](bool quit) {
        return [&application, &threads, quit] {
            threads.performOnMain([&application, quit] {
                std::fputs(quit ? "quit " : "continue ", stderr);
                application.replyToApplicationShouldTerminate(quit);
                if (!quit)
                    application.terminate();
            });
        };
    };
    ScriptedDelegate delegate([&] { application.terminate(); });
    delegate.add(TerminateReply::Later, reply(false));
    delegate.add(TerminateReply::Later, reply(true));
    application.run(delegate, end);
}

// A request that comes while the reply is pending waits for it.
void requestWhileReplyIsPending() {
    CocoaApplication application;
    CocoaThreads threads;
    ScriptedDelegate delegate([&] { application.terminate(); });
    delegate.add(TerminateReply::Later, [&] {
        application.terminate();
        threads.performOnMain([&] {
            threads.performOnMain([&] {
                std::fputs("continue ", stderr);
                application.replyToApplicationShouldTerminate(false);
            });
        });
    });
    delegate.add(TerminateReply::Now);
    application.run(delegate, end);
}

void replyWithinTheAnswer() {
    CocoaApplication application;
    ScriptedDelegate delegate([&] { application.terminate(); });
    delegate.add(TerminateReply::Later, [&] {
        application.replyToApplicationShouldTerminate(false);
        application.terminate();
    });
    delegate.add(TerminateReply::Cancel, [&] {
        // Nobody waits for this one.
        application.replyToApplicationShouldTerminate(true);
        application.terminate();
    });
    delegate.add(TerminateReply::Later, [&] { application.replyToApplicationShouldTerminate(true); });
    application.run(delegate, end);
}

void requestBeforeTheLoopRuns() {
    CocoaApplication application;
    application.terminate();
    ScriptedDelegate delegate([] {});
    delegate.add(TerminateReply::Now);
    application.run(delegate, end);
}

} // namespace

TEST(CocoaApplicationDeathTest, asksLaterContinuesAsksAgainAndQuits) {
    EXPECT_EXIT(askTwiceAndQuit(), testing::ExitedWithCode(0), "launched asked continue asked quit end$");
}

TEST(CocoaApplicationDeathTest, asksAgainForARequestThatCameWhileTheReplyWasPending) {
    EXPECT_EXIT(requestWhileReplyIsPending(), testing::ExitedWithCode(0), "launched asked continue asked end$");
}

TEST(CocoaApplicationDeathTest, takesAReplyWithinTheAnswer) {
    EXPECT_EXIT(replyWithinTheAnswer(), testing::ExitedWithCode(0), "launched asked asked asked end$");
}

TEST(CocoaApplicationDeathTest, asksForAnEarlyRequestOnceItRuns) {
    EXPECT_EXIT(requestBeforeTheLoopRuns(), testing::ExitedWithCode(0), "launched asked end$");
}
