#pragma once

#include "platform/Threads.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace tests {

// What all hand-over between threads does. A `World` has `threads` and `runUntil(condition)`, which lets the main
// thread and the others go on, for as long as a test may take.
template <class World>
class ThreadsContract : public testing::Test {
protected:
    World world_;
};
TYPED_TEST_SUITE_P(ThreadsContract);

TYPED_TEST_P(ThreadsContract, StepsRunLaterAndInOrder) {
    auto& world = this->world_;
    platform::Threads& threads = world.threads;
    std::string order;
    threads.performOnMain([&] {
        threads.performOnMain([&] { order += "third "; });
        order += "first ";
    });
    threads.performOnMain([&] { order += "second "; });
    threads.performInBackground([&] { threads.performOnMain([&] { order += "result "; }); });
    EXPECT_EQ(order, "");
    EXPECT_TRUE(world.runUntil([&] { return order.size() == std::string("first second third result ").size(); }))
        << order;
    EXPECT_LT(order.find("first second "), order.find("third "));
}

TYPED_TEST_P(ThreadsContract, StepsOfEachThreadKeepTheirOrderOnTheMainThread) {
    auto& world = this->world_;
    constexpr int count = 500;
    const std::thread::id mainThread = std::this_thread::get_id();
    std::vector<std::vector<int>> seen(4);
    for (std::vector<int>& numbers : seen)
        world.threads.performInBackground([&] {
            for (int number = 0; number < count; ++number)
                world.threads.performOnMain([&, number] {
                    EXPECT_EQ(std::this_thread::get_id(), mainThread);
                    numbers.push_back(number);
                });
        });
    EXPECT_TRUE(world.runUntil([&] {
        return std::all_of(seen.begin(), seen.end(), [](const auto& numbers) { return numbers.size() == count; });
    }));
    for (const std::vector<int>& numbers : seen)
        EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
}

TYPED_TEST_P(ThreadsContract, AStepGoesOnceItHasRun) {
    auto& world = this->world_;
    auto onMain = std::make_shared<int>();
    auto inBackground = std::make_shared<int>();
    const std::weak_ptr<int> ends[] = {onMain, inBackground};
    bool last = false;
    world.threads.performOnMain([held = std::move(onMain)] {});
    world.threads.performInBackground([held = std::move(inBackground)] {});
    world.threads.performOnMain([&] { last = true; });
    EXPECT_TRUE(world.runUntil([&] { return last; }));
    EXPECT_TRUE(ends[0].expired());
    while (!ends[1].expired())
        std::this_thread::yield();
}

REGISTER_TYPED_TEST_SUITE_P(ThreadsContract, StepsRunLaterAndInOrder, StepsOfEachThreadKeepTheirOrderOnTheMainThread,
                            AStepGoesOnceItHasRun);

} // namespace tests
