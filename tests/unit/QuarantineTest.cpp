#include "install/NSFileManager+ExtendedAttributes.h"
#include "tests/unit/CoreTest.h"

#include <cerrno>

// Which items lose the mark. What the attribute is on this system: the contract tests.

namespace manager = NSFileManager::ExtendedAttributes;

class QuarantineTest : public CoreTest {
protected:
    static constexpr const char* mark = "com.apple.quarantine";

    QuarantineTest() {
        system.files.addFile("/b/T.app/Contents/MacOS/T").attributes = {mark, "other"};
        system.files.addLink("/b/T.app/Contents/Current", "/outside").attributes = {mark};
        system.files.addFile("/outside/file").attributes = {mark};
        system.files.addLink("/b/link", "/b/T.app").attributes = {mark};
        for (const char* folder : {"/b/T.app", "/b/T.app/Contents", "/outside", "/b"}) {
            system.files.item(folder)->attributes = {mark};
        }
    }
    bool marked(const std::string& path) { return system.files.item(path)->attributes.count(mark) > 0; }
};

TEST_F(QuarantineTest, ABundleLosesTheMarkAtEveryDepthAndNothingElseDoes) {
    manager::releaseFromQuarantine("/b/T.app");
    for (const char* name : {"", "/Contents", "/Contents/MacOS/T", "/Contents/Current"})
        EXPECT_FALSE(marked(std::string("/b/T.app") + name)) << name;
    for (const char* path : {"/b", "/b/link", "/outside", "/outside/file"})
        EXPECT_TRUE(marked(path)) << path;
    EXPECT_EQ(system.files.item("/b/T.app/Contents/MacOS/T")->attributes.count("other"), 1U);
}

TEST_F(QuarantineTest, LinksAreNotFollowed) {
    manager::releaseFromQuarantine("/b/link");
    EXPECT_FALSE(marked("/b/link"));
    EXPECT_TRUE(marked("/b/T.app"));
}

// A missing item is passed over, and so is one without the mark.
TEST_F(QuarantineTest, WhatIsMissingOrCannotBeAFileIsPassedOver) {
    manager::releaseFromQuarantine("/missing");
    for (int round = 0; round < 2; ++round)
        manager::releaseFromQuarantine("/b/T.app/Contents/MacOS");
    EXPECT_FALSE(marked("/b/T.app/Contents/MacOS/T"));
    system.files.changes.clear();
    errno = 0;
    EXPECT_EQ(manager::removeXAttr(mark, std::string("/b\0/T.app", 9), 1), -1);
    EXPECT_EQ(errno, EDOM);
    EXPECT_TRUE(system.files.changes.empty());
}
