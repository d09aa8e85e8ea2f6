#include "platform/qtcore/QtApplication.h"
#include "platform/qtcore/QtThreads.h"
#include "tests/contract/ThreadsContract.h"
#include "tests/support/FakeThreads.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using platform::QtThreads;
using platform::TerminateReply;

// An application whose delegate notes what it is asked, and answers what the test has laid out.
class Program : public platform::ApplicationDelegate {
public:
    int run() {
        application.setDelegate(*this);
        // Ends a loop that a fault keeps from ending.
        QTimer::singleShot(10000, &guard, [] { QCoreApplication::exit(99); });
        return application.run();
    }
    // Carries out the letters of a script: q(uit), y(es) and n(o) to the question, and a blank for a turn of the loop.
    void play(const std::string& script) {
        for (std::size_t at = 0; at < script.size(); ++at) {
            if (script[at] == 'q') {
                application.terminate();
            } else if (script[at] != ' ') {
                application.replyToApplicationShouldTerminate(script[at] == 'y');
            } else {
                QTimer::singleShot(1, &guard, [this, rest = script.substr(at + 1)] { play(rest); });
                break;
            }
        }
        calls += script.empty() ? "" : "| ";
    }

    void applicationDidFinishLaunching() override {
        calls += "launched ";
        launched();
    }
    TerminateReply applicationShouldTerminate() override {
        calls += "asked ";
        if (replies.empty())
            return TerminateReply::Now;
        const TerminateReply reply = replies.front();
        replies.erase(replies.begin());
        play(answerWithin);
        return reply;
    }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    void showHelp() override {}

    std::function<void()> launched = [] {};
    std::string answerWithin; // a script for within the question
    std::vector<TerminateReply> replies;
    std::string calls;
    platform::QtApplication application;
    QObject guard;
};

TEST(Application, endsWhenTheDelegateAgrees) {
    using enum TerminateReply;
    const struct {
        std::vector<TerminateReply> replies;
        const char* script;
        const char* calls;
        const char* answerWithin = "";
    } rows[] = {
        {{Now}, "q", "launched | asked "},
        {{Cancel, Now}, "q q", "launched | asked | asked "},
        // An answer to no question counts for nothing.
        {{Later, Later}, "yq nq y", "launched | asked | asked | "},
        // A request under a question is dropped; one that comes with the answer is not.
        {{Later, Now}, "q qq n q", "launched | asked | | | asked "},
        {{Later, Now}, "q nq", "launched | asked | asked "},
        {{Later}, "q", "launched | asked | ", "y"},
    };
    for (const auto& row : rows) {
        Program program;
        program.replies = row.replies;
        program.answerWithin = row.answerWithin;
        program.launched = [&] { program.play(row.script); };
        EXPECT_EQ(program.run(), 0) << row.script;
        EXPECT_EQ(program.calls, row.calls) << row.script;
    }
}

TEST(Application, requestsBeforeTheLoopAreNotLost) {
    Program program;
    program.application.terminate();
    QCoreApplication::processEvents();
    EXPECT_EQ(program.calls, "");
    EXPECT_EQ(program.run(), 0);
    EXPECT_EQ(program.calls, "launched asked ");
}

class Threads : public ::testing::Test {
protected:
    Program program;
    QtThreads threads;
};

TEST_F(Threads, stepsRunLaterAndInOrder) {
    constexpr int count = 1000;
    std::vector<std::string> received(4);
    std::string expected;
    const std::thread::id mainThread = std::this_thread::get_id();
    for (int number = 0; number < count; ++number)
        expected += std::to_string(number) + ' ';
    program.launched = [&] {
        threads.performOnMain([&] { program.calls += "later "; });
        program.calls += "first ";
        for (std::string& numbers : received) {
            threads.performInBackground([&] {
                for (int number = 0; number < count; ++number)
                    threads.performOnMain([&, number] {
                        EXPECT_EQ(std::this_thread::get_id(), mainThread);
                        numbers += std::to_string(number) + ' ';
                        if (received == std::vector(4, expected))
                            program.application.terminate();
                    });
            });
        }
    };
    EXPECT_EQ(program.run(), 0) << received.front();
    EXPECT_EQ(program.calls, "launched first later asked ");
}

// Notes on which threads the last reference goes.
struct Witness {
    std::atomic<int>& elsewhere;
    const std::thread::id home = std::this_thread::get_id();
    ~Witness() { elsewhere += std::this_thread::get_id() != home ? 1 : 0; }
};

TEST_F(Threads, whatAStepHoldsGoesOnTheMainThread) {
    std::atomic<int> elsewhere = 0;
    program.launched = [&] {
        auto witnesses = std::make_shared<std::vector<std::shared_ptr<Witness>>>();
        for (int number = 0; number < 2000; ++number)
            witnesses->push_back(std::make_shared<Witness>(elsewhere));
        threads.performInBackground([&, witnesses] {
            for (std::shared_ptr<Witness>& witness : *witnesses)
                threads.performOnMain([witness = std::move(witness)] {});
            threads.performOnMain([&] { program.application.terminate(); });
        });
    };
    EXPECT_EQ(program.run(), 0);
    EXPECT_EQ(elsewhere, 0);
}

TEST_F(Threads, noStepRunsAfterTheEnd) {
    program.launched = [&] {
        threads.performOnMain([&] {
            program.calls += "last";
            QCoreApplication::exit(0);
        });
        threads.performOnMain([&] { program.calls += " too late"; });
    };
    EXPECT_EQ(program.run(), 0);
    EXPECT_EQ(program.calls, "launched last");
}

TEST_F(Threads, backgroundStepsHaveThreadsAndLoopsOfTheirOwn) {
    std::string order;
    program.launched = [&] {
        threads.performInBackground([&] {
            EXPECT_FALSE(threads.makeRunLoop()->runOnce(std::chrono::milliseconds(1)));
            order += "step ";
            threads.performOnMain([&] { program.application.terminate(); });
        });
    };
    EXPECT_EQ(program.run(), 0);
    EXPECT_EQ(order, "step ");
}

} // namespace

namespace tests {

namespace {

class QtWorld {
public:
    platform::Threads& threads() { return threads_; }
    bool runUntil(const std::function<bool()>& condition) {
        QTimer limit;
        limit.setSingleShot(true);
        limit.start(20000);
        while (!condition() && limit.isActive())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return condition();
    }

private:
    QtThreads threads_;
};

class FakeWorld {
public:
    platform::Threads& threads() { return threads_; }
    bool runUntil(const std::function<bool()>& condition) {
        threads_.runAll();
        return condition();
    }

private:
    FakeThreads threads_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, ThreadsContract, QtWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ThreadsContract, FakeWorld);

} // namespace

} // namespace tests

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
