#include "platform/cocoa/CocoaApplication.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // Tests that end the program run it anew for that.
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    @autoreleasepool {
        [TXApplication sharedApplication];
        return RUN_ALL_TESTS();
    }
}
