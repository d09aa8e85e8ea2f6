// The main loop and hand-over between threads on Qt, and everybody's contracts over them and over the fakes.

#include "platform/qtcore/QtApplication.h"
#include "platform/qtcore/QtThreads.h"
#include "tests/contract/ApplicationContract.h"
#include "tests/contract/ThreadsContract.h"
#include "tests/support/FakeApplication.h"

#include <QCoreApplication>
#include <QTimer>

#include <atomic>

namespace tests {

namespace {

using platform::QtThreads;

struct QtApplicationWorld {
    void later(std::function<void()> step) { QTimer::singleShot(1, &guard, std::move(step)); }
    void run(platform::ApplicationDelegate& delegate, const std::function<void()>& end) {
        application.setDelegate(delegate);
        // Ends a loop that a fault keeps from ending.
        QTimer::singleShot(10000, &guard, [] { QCoreApplication::exit(99); });
        if (application.run() == 0)
            end();
    }

    platform::QtApplication application;
    QObject guard;
};

struct FakeApplicationWorld {
    void later(std::function<void()> step) { threads.performOnMain(std::move(step)); }
    void run(platform::ApplicationDelegate& delegate, const std::function<void()>& end) {
        application.delegate = &delegate;
        delegate.applicationDidFinishLaunching();
        threads.runAll();
        if (application.ended)
            end();
    }

    FakeThreads threads;
    FakeApplication application{threads};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, ApplicationContract, QtApplicationWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ApplicationContract, FakeApplicationWorld);

struct QtThreadsWorld {
    static bool runUntil(const std::function<bool()>& condition) {
        QTimer limit;
        limit.setSingleShot(true);
        limit.start(20000);
        while (!condition() && limit.isActive())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return condition();
    }

    QtThreads threads;
};

struct FakeThreadsWorld {
    bool runUntil(const std::function<bool()>& condition) {
        threads.runAll();
        return condition();
    }

    FakeThreads threads;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, ThreadsContract, QtThreadsWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ThreadsContract, FakeThreadsWorld);

class QtThreadsTest : public testing::Test {
protected:
    // Runs a program that begins with the step, to its end.
    void run(const std::function<void()>& step) {
        delegate_.launched = step;
        bool ended = false;
        world_.run(delegate_, [&] { ended = true; });
        EXPECT_TRUE(ended);
    }

    QtApplicationWorld world_;
    NotingDelegate delegate_;
    QtThreads threads_;
};

// Notes on which threads the last reference goes.
struct Witness {
    std::atomic<int>& elsewhere;
    const std::thread::id home = std::this_thread::get_id();
    ~Witness() { elsewhere += std::this_thread::get_id() != home ? 1 : 0; }
};

} // namespace

TEST_F(QtThreadsTest, WhatAStepHoldsGoesOnTheMainThread) {
    std::atomic<int> elsewhere = 0;
    run([&] {
        auto witnesses = std::make_shared<std::vector<std::shared_ptr<Witness>>>();
        for (int number = 0; number < 2000; ++number)
            witnesses->push_back(std::make_shared<Witness>(elsewhere));
        threads_.performInBackground([&, witnesses] {
            for (std::shared_ptr<Witness>& witness : *witnesses)
                threads_.performOnMain([witness = std::move(witness)] {});
            threads_.performOnMain([&] { world_.application.terminate(); });
        });
    });
    EXPECT_EQ(elsewhere, 0);
}

TEST_F(QtThreadsTest, NoStepRunsAfterTheEnd) {
    run([&] {
        threads_.performOnMain([&] {
            delegate_.calls += "last";
            QCoreApplication::exit(0);
        });
        threads_.performOnMain([&] { delegate_.calls += " too late"; });
    });
    EXPECT_EQ(delegate_.calls, "launched last");
}

TEST_F(QtThreadsTest, BackgroundStepsHaveLoopsOfTheirOwn) {
    run([&] {
        threads_.performInBackground([&] {
            EXPECT_FALSE(threads_.makeRunLoop()->runOnce(std::chrono::milliseconds(1)));
            threads_.performOnMain([&] { world_.application.terminate(); });
        });
    });
}

} // namespace tests
