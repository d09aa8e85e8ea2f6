#include "install/TXDiskImageUnarchiver.h"

#include "tests/unit/RecordingDelegate.h"

// The registry, and the course of an extraction on fake tools and files. The tool itself: the functional tests.

namespace {

const std::string hdiutil = "/usr/bin/hdiutil";
const std::string archive = "/tmp/me/1.tolvix/Tolvix.dmg";
const std::string mountPoint = "/tmp/me/UNIQUE";
const std::string extracted = "/tmp/me/1.tolvix/UNIQUE";

} // namespace

class DiskImageUnarchiverTest : public CoreTest {
protected:
    DiskImageUnarchiverTest() {
        system.files.addFile(archive);
        tool().effect = [this](const auto& task) { mount(task); };
    }

    FakeTool& tool() { return system.tasks.tools[hdiutil]; }
    void mount(const platform::TaskDescription& task) {
        for (const char* name : {"/Tolvix.app/Contents/Info.plist", "/.hidden", "/Read me.txt"})
            system.files.addFile(task.arguments.at(3) + name);
    }

    // The whole extraction; nothing outside keeps the unarchiver.
    Texts extract() {
        system.processInfo.uniqueTexts = 0;
        auto unarchiver = TXUnarchiver::unarchiverForPath(archive);
        unarchiver->setDelegate(delegate);
        unarchiver->start();
        unarchiver.reset();
        EXPECT_EQ(system.threads.backgroundCount(), 1U) << "start must return at once";
        system.threads.runAll();
        return delegate->taken();
    }
    bool extractedHolds(const std::string& name) { return system.files.has(extracted + "/" + name); }

    const Texts success{"off main: copied " + extracted, "finish"};
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>(system.threads);
};

TEST_F(DiskImageUnarchiverTest, TheRegistryHoldsExactlyTheDiskImageUnarchiver) {
    EXPECT_EQ(TXUnarchiver::_unarchiverImplementations().size(), 1U);
    for (const auto& [path, accepted] :
         {std::pair("/x/a.zip.dmg", true), {"/x/Tolvix.DMG", false}, {"/x/.dmg", false}, {"/x.dmg/a", false}})
        EXPECT_EQ(TXUnarchiver::unarchiverForPath(path) != nullptr, accepted) << path;
}

TEST_F(DiskImageUnarchiverTest, AttachesCopiesBesideTheArchiveAndDetaches) {
    EXPECT_EQ(extract(), success);
    for (const char* name : {"Tolvix.app/Contents/Info.plist", ".hidden", "Read me.txt"})
        EXPECT_TRUE(extractedHolds(name)) << name;
    EXPECT_TRUE(system.files.has(mountPoint)) << "the mounted folder is not the unarchiver's to remove";
    ASSERT_EQ(system.tasks.launches.size(), 1U);
    const FakeTasks::Launch& attach = system.tasks.launches[0];
    EXPECT_EQ(attach.task.directory, "/");
    EXPECT_EQ(attach.task.arguments,
              (Texts{"attach", archive, "-mountpoint", mountPoint, "-noverify", "-nobrowse", "-noautoopen"}));
    EXPECT_EQ(attach.input->written, "yes\n");
    EXPECT_TRUE(attach.input->ended);
    ASSERT_EQ(system.tasks.detached.size(), 1U);
    EXPECT_EQ(system.tasks.detached[0].path, hdiutil);
    EXPECT_EQ(system.tasks.detached[0].arguments, (Texts{"detach", mountPoint, "-force"}));
}

TEST_F(DiskImageUnarchiverTest, AFailureBeforeTheCopyPostsOneFailure) {
    system.files.failAt(FakeFiles::Operation::Create, extracted);
    EXPECT_EQ(extract(), Texts{"fail"});
    EXPECT_EQ(system.tasks.detached.size(), 1U);
    system.files.removeTree(mountPoint);
    tool().status = 1;
    EXPECT_EQ(extract(), Texts{"fail"});
    EXPECT_FALSE(system.files.has(mountPoint));
    system.files.failAt(FakeFiles::Operation::Create, mountPoint);
    EXPECT_EQ(extract(), Texts{"fail"});
    EXPECT_EQ(system.tasks.launches.size(), 2U) << "attached without a mount point";
    EXPECT_EQ(system.tasks.detached.size(), 1U) << "detached what was not attached";
}

TEST_F(DiskImageUnarchiverTest, ATakenMountPointFailsBeforeAttachingAndIsCleared) {
    for (const char* target : {"/nowhere", "/Users/me", "a folder"}) {
        SCOPED_TRACE(target);
        *target == '/' ? system.files.addLink(mountPoint, target) : system.files.addFile(mountPoint + "/x");
        EXPECT_EQ(extract(), Texts{"fail"});
        EXPECT_TRUE(system.tasks.launches.empty());
        EXPECT_FALSE(system.files.has(mountPoint));
    }
    EXPECT_TRUE(system.files.has("/Users/me"));
}

// Deliberate in the program: one failure notice for each entry that fails.
TEST_F(DiskImageUnarchiverTest, TwoFailingEntriesGiveTwoFailuresAndNoSuccess) {
    for (const char* name : {"/Tolvix.app", "/.hidden"})
        system.files.failAt(FakeFiles::Operation::Copy, mountPoint + name);
    EXPECT_EQ(extract(), (Texts{"fail", "fail"}));
    EXPECT_TRUE(extractedHolds("Read me.txt")) << "the others are still copied";
    EXPECT_EQ(system.tasks.detached.size(), 1U);
}

TEST_F(DiskImageUnarchiverTest, UnreadableEntriesAndVolumesAreNoFailure) {
    for (const std::string& unreadable : {mountPoint + "/.hidden", mountPoint}) {
        SCOPED_TRACE(unreadable);
        system.files.removeTree(mountPoint);
        system.files.removeTree(extracted);
        tool().effect = [&](const auto& task) {
            mount(task);
            system.files.item(unreadable)->readable = false;
        };
        EXPECT_EQ(extract(), success);
        EXPECT_FALSE(extractedHolds(".hidden"));
        EXPECT_EQ(extractedHolds("Tolvix.app"), unreadable != mountPoint);
        EXPECT_TRUE(system.files.has(extracted));
    }
}
