#pragma once

#include "platform/Application.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace tests {

// Notes what it is asked, and answers what the test has laid out.
class NotingDelegate final : public platform::ApplicationDelegate {
public:
    void applicationDidFinishLaunching() override {
        calls += "launched ";
        launched();
    }
    platform::TerminateReply applicationShouldTerminate() override {
        calls += "asked ";
        if (replies.empty())
            return platform::TerminateReply::Now;
        const platform::TerminateReply reply = replies.front();
        replies.erase(replies.begin());
        asked();
        return reply;
    }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    void showHelp() override {}

    std::function<void()> launched = [] {};
    std::function<void()> asked = [] {};
    std::vector<platform::TerminateReply> replies;
    std::string calls;
};

// What every application does. A `World` has `application`, `later(step)`, which runs the step after what the main
// thread has to do by then, and `run(delegate, end)`, which runs the main loop and calls `end` when the program ends.
template <class World>
class ApplicationContract : public testing::Test {
protected:
    // What the delegate was asked in a program that does the turns, one after the other; printed for the death test.
    [[noreturn]] static void run(const std::vector<platform::TerminateReply>& replies, const std::string& turns,
                                 const std::string& answerWithin, bool early) {
        World world;
        NotingDelegate delegate;
        delegate.replies = replies;
        delegate.asked = [&] { play(world, delegate, answerWithin); };
        delegate.launched = [&] { play(world, delegate, turns); };
        if (early)
            world.application.terminate();
        world.run(delegate, [&] {
            std::fputs(delegate.calls.c_str(), stderr);
            std::_Exit(0);
        });
        std::_Exit(9);
    }

private:
    // Carries out letters: q(uit), y(es) and n(o) to the question, and a blank for a turn of the loop.
    static void play(World& world, NotingDelegate& delegate, const std::string& turns) {
        delegate.calls += turns.empty() ? "" : "/ ";
        for (std::size_t at = 0; at < turns.size(); ++at) {
            if (turns[at] == 'q') {
                world.application.terminate();
            } else if (turns[at] != ' ') {
                world.application.replyToApplicationShouldTerminate(turns[at] == 'y');
            } else {
                world.later([&, rest = turns.substr(at + 1)] { play(world, delegate, rest); });
                break;
            }
        }
    }
};
TYPED_TEST_SUITE_P(ApplicationContract);

TYPED_TEST_P(ApplicationContract, EndsWhenTheDelegateAgrees) {
    using enum platform::TerminateReply;
    const struct {
        std::vector<platform::TerminateReply> replies;
        const char* turns;
        const char* calls;
        const char* answerWithin = "";
        bool early = false;
    } rows[] = {
        {{Now}, "q", "launched / asked "},
        {{Cancel, Now}, "q q", "launched / asked / asked "},
        // An answer to no question counts for nothing.
        {{Later, Later}, "yq nq y", "launched / asked / asked / "},
        // A request under a question is dropped; one that comes with the answer is not.
        {{Later, Now}, "q qq n q", "launched / asked / / / asked "},
        {{Later, Now}, "q nq", "launched / asked / asked "},
        {{Later}, "q", "launched / asked / ", "y"},
        // A request before the loop runs waits for it.
        {{Now}, "", "launched asked ", "", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.turns);
        EXPECT_EXIT(TestFixture::run(row.replies, row.turns, row.answerWithin, row.early), testing::ExitedWithCode(0),
                    row.calls + std::string("$"));
    }
}

REGISTER_TYPED_TEST_SUITE_P(ApplicationContract, EndsWhenTheDelegateAgrees);

} // namespace tests
