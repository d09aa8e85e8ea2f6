#include "platform/cocoa/CocoaThreads.h"
#include "tests/cocoa/MainLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using platform::CocoaThreads;
using namespace std::chrono_literals;

TEST(CocoaThreadsTest, performsOnMainLaterAndInOrder) {
    CocoaThreads threads;
    std::string order;
    threads.performOnMain([&] {
        order += 'a';
        threads.performOnMain([&] { order += 'c'; });
    });
    threads.performOnMain([&] { order += 'b'; });
    EXPECT_EQ(order, "");
    EXPECT_TRUE(runUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, "abc");
}

TEST(CocoaThreadsTest, keepsTheOrderOfEachThreadAndRunsAllStepsOnMain) {
    CocoaThreads threads;
    constexpr int steps = 500;
    const auto main = std::this_thread::get_id();
    std::vector<std::vector<int>> seen(4);
    std::atomic<bool> wrongThread = false;
    for (auto& list : seen) {
        threads.performInBackground([&] {
            for (int number = 0; number < steps; ++number) {
                threads.performOnMain([&, number] {
                    wrongThread = wrongThread || std::this_thread::get_id() != main;
                    list.push_back(number);
                });
            }
        });
    }
    ASSERT_TRUE(runUntil([&] {
        for (const auto& list : seen) {
            if (list.size() < steps)
                return false;
        }
        return true;
    }));
    EXPECT_FALSE(wrongThread);
    for (const auto& list : seen)
        EXPECT_TRUE(std::is_sorted(list.begin(), list.end()));
}

TEST(CocoaThreadsTest, destroysAStepOnceItHasRun) {
    CocoaThreads threads;
    auto onMain = std::make_shared<int>();
    auto inBackground = std::make_shared<int>();
    const std::weak_ptr<int> ends[] = {onMain, inBackground};
    threads.performOnMain([held = std::move(onMain)] {});
    threads.performInBackground([held = std::move(inBackground)] {});
    EXPECT_TRUE(runUntil([&] { return ends[0].expired() && ends[1].expired(); }));
}
