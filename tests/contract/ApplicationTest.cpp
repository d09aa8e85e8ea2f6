#include "platform/qtcore/QtApplication.h"
#include "platform/qtcore/QtThreads.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using platform::QtApplication;
using platform::QtThreads;
using platform::TerminateReply;

// Notes what it is asked, and answers what the test has laid out.
class Delegate : public platform::ApplicationDelegate {
public:
    void applicationDidFinishLaunching() override {
        calls += "launched ";
        if (launched) {
            launched();
        }
    }
    TerminateReply applicationShouldTerminate() override {
        calls += "asked ";
        const TerminateReply reply = replies.empty() ? TerminateReply::Now : replies.front();
        if (!replies.empty()) {
            replies.erase(replies.begin());
        }
        if (asked) {
            asked();
        }
        return reply;
    }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    void showHelp() override {}

    std::function<void()> launched;
    std::function<void()> asked;
    std::vector<TerminateReply> replies;
    std::string calls;
};

class Application : public ::testing::Test {
protected:
    int run() {
        application.setDelegate(delegate);
        // Ends a loop that a fault keeps from ending.
        QTimer::singleShot(10000, &guard, [] { QCoreApplication::exit(99); });
        return application.run();
    }
    void later(std::function<void()> step) {
        QTimer::singleShot(1, &guard, [this, step = std::move(step)] {
            delegate.calls += "later ";
            step();
        });
    }

    Delegate delegate;
    QtApplication application;
    QObject guard;
};

TEST_F(Application, endsWhenTheDelegateAgrees) {
    delegate.launched = [this] {
        application.terminate();
        delegate.calls += "returned ";
    };
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(delegate.calls, "launched returned asked ");
}

TEST_F(Application, requestsBeforeTheLoopAreNotLost) {
    application.terminate();
    QCoreApplication::processEvents();
    EXPECT_EQ(delegate.calls, "");
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(delegate.calls, "launched asked ");
}

TEST_F(Application, goesOnWhenTheDelegateRefuses) {
    delegate.replies = {TerminateReply::Cancel, TerminateReply::Now};
    delegate.launched = [this] {
        application.terminate();
        later([this] { application.terminate(); });
    };
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(delegate.calls, "launched asked later asked ");
}

TEST_F(Application, waitsForALateReply) {
    delegate.replies = {TerminateReply::Later, TerminateReply::Later};
    delegate.launched = [this] {
        application.replyToApplicationShouldTerminate(true); // to no question
        application.terminate();
        later([this] {
            application.replyToApplicationShouldTerminate(false);
            application.terminate();
            later([this] { application.replyToApplicationShouldTerminate(true); });
        });
    };
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(delegate.calls, "launched asked later asked later ");
}

TEST_F(Application, remembersARequestThatComesUnderAQuestion) {
    delegate.replies = {TerminateReply::Later, TerminateReply::Now};
    delegate.launched = [this] {
        application.terminate();
        later([this] {
            application.terminate();
            application.terminate();
            later([this] { application.replyToApplicationShouldTerminate(false); });
        });
    };
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(delegate.calls, "launched asked later later asked ");
}

TEST_F(Application, takesAReplyWithinTheQuestion) {
    delegate.replies = {TerminateReply::Later};
    delegate.launched = [this] { application.terminate(); };
    delegate.asked = [this] { application.replyToApplicationShouldTerminate(true); };
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(delegate.calls, "launched asked ");
}

class Threads : public Application {
protected:
    QtThreads threads;
};

TEST_F(Threads, stepsRunLaterAndInOrder) {
    constexpr int count = 1000;
    std::string order;
    std::vector<int> previous(4, -1);
    int received = 0;
    bool isOrdered = true;
    const std::thread::id mainThread = std::this_thread::get_id();
    delegate.launched = [&] {
        for (const char* name : {"a", "b", "c"}) {
            threads.performOnMain([&order, name] { order += name; });
        }
        order += "|";
        for (std::size_t sender = 0; sender < previous.size(); ++sender) {
            threads.performInBackground([&, sender] {
                for (int number = 0; number < count; ++number) {
                    threads.performOnMain([&, sender, number] {
                        isOrdered =
                            isOrdered && number == previous[sender] + 1 && std::this_thread::get_id() == mainThread;
                        previous[sender] = number;
                        if (++received == 4 * count) {
                            application.terminate();
                        }
                    });
                }
            });
        }
    };
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(order, "|abc");
    EXPECT_TRUE(isOrdered);
    EXPECT_EQ(received, 4 * count);
}

// Notes on which threads the last reference goes.
struct Witness {
    std::atomic<int>& elsewhere;
    const std::thread::id home = std::this_thread::get_id();
    ~Witness() { elsewhere += std::this_thread::get_id() != home ? 1 : 0; }
};

TEST_F(Threads, whatAStepHoldsGoesOnTheMainThread) {
    constexpr int count = 2000;
    std::atomic<int> elsewhere = 0;
    delegate.launched = [&] {
        auto witnesses = std::make_shared<std::vector<std::shared_ptr<Witness>>>();
        for (int number = 0; number < count; ++number) {
            witnesses->push_back(std::make_shared<Witness>(elsewhere));
        }
        threads.performInBackground([&, witnesses] {
            for (std::shared_ptr<Witness>& witness : *witnesses) {
                threads.performOnMain([witness = std::move(witness)] {});
            }
            threads.performOnMain([&] { application.terminate(); });
        });
    };
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(elsewhere, 0);
}

TEST_F(Threads, noStepRunsAfterTheEnd) {
    std::string order;
    delegate.launched = [&] {
        threads.performOnMain([&] {
            order += "last";
            QCoreApplication::exit(0);
        });
        threads.performOnMain([&] { order += " too late"; });
    };
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(order, "last");
}

TEST_F(Threads, backgroundStepsHaveThreadsAndLoopsOfTheirOwn) {
    std::string order;
    delegate.launched = [&] {
        threads.performInBackground([&] {
            const auto loop = threads.makeRunLoop();
            threads.performInBackground([&, loop] { loop->post([&order] { order += "event "; }); });
            EXPECT_TRUE(loop->runOnce(std::chrono::seconds(20)));
            EXPECT_FALSE(loop->runOnce(std::chrono::milliseconds(1)));
            threads.performOnMain([&] { application.terminate(); });
        });
    };
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(order, "event ");
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
