#pragma once

#include "platform/Threads.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace tests {

// What all hand-over between threads does. A `World` has `threads()` and `runUntil(condition)`, which lets the main
// thread and the others go on, for as long as a test may take.
template <class World>
class ThreadsContract : public testing::Test {
protected:
    World world_;
};
TYPED_TEST_SUITE_P(ThreadsContract);

TYPED_TEST_P(ThreadsContract, stepsRunLaterAndInOrder) {
    auto& world = this->world_;
    platform::Threads& threads = world.threads();
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

REGISTER_TYPED_TEST_SUITE_P(ThreadsContract, stepsRunLaterAndInOrder);

} // namespace tests
