#include "install/NSFileManager+ExtendedAttributes.h"
#include "tests/unit/CoreTest.h"

#include <cerrno>

// Which items lose the mark. What the attribute is on this system: the contract tests.

namespace manager = NSFileManager::ExtendedAttributes;

class QuarantineTest : public CoreTest {
protected:
    static constexpr const char* mark = "com.apple.quarantine";

    QuarantineTest() {
        system.files.addFile("/b/T.app/Contents/MacOS/T").attributes = {"other"};
        system.files.addLink("/b/T.app/Contents/Current", "/b/outside");
        system.files.addFile("/b/outside/file");
        system.files.addLink("/b/link", "/b/T.app");
        for (const std::string& name : system.files.entriesBelow("/b"))
            system.files.item("/b/" + name)->attributes.insert(mark);
    }

    // The names of the items below /b that have the mark.
    Texts marked() {
        Texts names = system.files.entriesBelow("/b");
        std::erase_if(names, [&](auto& name) { return system.files.item("/b/" + name)->attributes.count(mark) == 0; });
        return names;
    }
};

TEST_F(QuarantineTest, ABundleLosesTheMarkAtEveryDepthAndNoLinkIsFollowed) {
    manager::releaseFromQuarantine("/b/link");
    EXPECT_EQ(marked(), (Texts{"T.app", "T.app/Contents", "T.app/Contents/Current", "T.app/Contents/MacOS",
                               "T.app/Contents/MacOS/T", "outside", "outside/file"}));
    manager::releaseFromQuarantine("/b/T.app");
    EXPECT_EQ(marked(), (Texts{"outside", "outside/file"}));
    EXPECT_EQ(system.files.item("/b/T.app/Contents/MacOS/T")->attributes, std::set<std::string>{"other"});
}

// A missing item is passed over, and so is one without the mark.
TEST_F(QuarantineTest, WhatIsMissingOrCannotBeAFileIsPassedOver) {
    manager::releaseFromQuarantine("/missing");
    for (int round = 0; round < 2; ++round)
        manager::releaseFromQuarantine("/b/T.app");
    EXPECT_EQ(marked().size(), 3U);
    system.files.changes.clear();
    errno = 0;
    EXPECT_EQ(manager::removeXAttr(mark, std::string("/b\0/T.app", 9), 1), -1);
    EXPECT_EQ(errno, EDOM);
    EXPECT_TRUE(system.files.changes.empty());
}
