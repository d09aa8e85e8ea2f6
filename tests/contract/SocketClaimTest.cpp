#include "platform/qtcore/SocketClaim.h"

#include "tests/contract/TestFolder.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

// Who gets a claim, who is told, and when it ends.

using platform::SocketClaim;

TEST(SocketClaimTest, ASecondClaimIsRefusedAndTheFirstIsTold) {
    const tests::TestFolder folder;
    const tests::TestFolder other;
    const auto nothing = [] {};
    int told = 0;
    {
        SocketClaim first;
        SocketClaim second;
        EXPECT_FALSE(SocketClaim::isHeld(folder.path()));
        EXPECT_TRUE(first.claim(folder.path(), [&] { ++told; }));
        EXPECT_FALSE(second.claim(folder.path() + "/.", nothing)) << "the same folder by another path";
        EXPECT_TRUE(SocketClaim::isHeld(folder.path()));
        EXPECT_TRUE(second.claim(other.path(), nothing));
        EXPECT_EQ(told, 0) << "never inside the call";
        while (told < 2)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    SocketClaim third;
    EXPECT_TRUE(third.claim(folder.path(), nothing)) << "a claim goes with its holder";
}
