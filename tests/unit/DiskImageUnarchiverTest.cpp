#include "install/TXDiskImageUnarchiver.h"

#include "tests/unit/CoreTest.h"

// The registry, and the course of an extraction on fake tools and files. The tool itself: the functional tests.

namespace {

const std::string hdiutil = "/usr/bin/hdiutil";
const std::string archive = "/tmp/me/1.tolvix/Tolvix.dmg";
const std::string mountPoint = "/tmp/me/UNIQUE";
const std::string extracted = "/tmp/me/1.tolvix/UNIQUE";

struct RecordingUnarchiverDelegate : TXUnarchiverDelegate {
    explicit RecordingUnarchiverDelegate(FakeThreads& fake) : threads(fake) {}
    void add(const std::string& message) { messages.push_back(message + (threads.inBackground() ? " off main" : "")); }
    void unarchiverDidCopyContentAtPath(const std::string& path) override { add("copied " + path); }
    void unarchiverDidFinish(TXUnarchiver& /*unarchiver*/) override { add("finish"); }
    void unarchiverDidFail(TXUnarchiver& /*unarchiver*/) override { add("fail"); }
    FakeThreads& threads;
    Texts messages;
};

} // namespace

class DiskImageUnarchiverTest : public CoreTest {
protected:
    DiskImageUnarchiverTest() {
        system.files.addFile(archive);
        tool().effect = [this](const auto& task) { mount(task); };
    }

    FakeTool& tool() { return system.tasks.tools[hdiutil]; }
    void mount(const platform::TaskDescription& task) {
        for (const char* name : {"/Tolvix.app/Contents/Info.plist", "/.hidden", "/Read me.txt"}) {
            system.files.addFile(task.arguments.at(3) + name);
        }
    }

    // The whole extraction; nothing outside keeps the unarchiver.
    Texts extract() {
        auto unarchiver = TXUnarchiver::unarchiverForPath(archive);
        unarchiver->setDelegate(delegate);
        unarchiver->start();
        unarchiver.reset();
        EXPECT_EQ(system.threads.backgroundCount(), 1U) << "start must return at once";
        system.threads.runAll();
        return std::exchange(delegate->messages, {});
    }
    bool extractedHolds(const std::string& name) { return system.files.has(extracted + "/" + name); }

    const Texts success{"copied " + extracted + " off main", "finish"};
    std::shared_ptr<RecordingUnarchiverDelegate> delegate =
        std::make_shared<RecordingUnarchiverDelegate>(system.threads);
};

TEST_F(DiskImageUnarchiverTest, TheRegistryHoldsExactlyTheDiskImageUnarchiver) {
    EXPECT_EQ(TXUnarchiver::_unarchiverImplementations().size(), 1U);
    const std::pair<const char*, bool> rows[] = {{"/x/a.zip.dmg", true}, {"/x/Tolvix.DMG", false}, {"/x/Tolvix", false},
                                                 {"/x/.dmg", false},     {"/x.dmg/a", false},      {"", false}};
    for (const auto& [path, accepted] : rows)
        EXPECT_EQ(TXUnarchiver::unarchiverForPath(path) != nullptr, accepted);
    EXPECT_EQ(TXUnarchiver::unarchiverForPath(archive)->description(), "TXDiskImageUnarchiver <" + archive + ">");
}

TEST_F(DiskImageUnarchiverTest, CopiesTheVolumeBesideTheArchiveAndReportsThePathFirst) {
    EXPECT_EQ(extract(), success);
    for (const char* name : {"Tolvix.app/Contents/Info.plist", ".hidden", "Read me.txt"}) {
        EXPECT_TRUE(extractedHolds(name)) << name;
    }
    EXPECT_TRUE(system.files.has(mountPoint)) << "the mounted folder is not the unarchiver's to remove";
}

TEST_F(DiskImageUnarchiverTest, ToolArgumentsAndInputKeepTheirOrder) {
    extract();
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

TEST_F(DiskImageUnarchiverTest, AttachFailurePostsOneFailureAndNoDetach) {
    for (const bool starts : {true, false}) {
        SCOPED_TRACE(starts ? "the tool fails" : "the tool cannot be started");
        tool().status = 1;
        if (!starts)
            system.tasks.tools.clear();
        EXPECT_EQ(extract(), Texts{"fail"});
        EXPECT_TRUE(system.tasks.detached.empty());
        EXPECT_FALSE(system.files.has(mountPoint));
        EXPECT_FALSE(system.files.has(extracted));
    }
}

TEST_F(DiskImageUnarchiverTest, ATakenMountPointFailsBeforeAttachingAndIsCleared) {
    const std::pair<const char*, std::function<void(FakeFiles&)>> rows[] = {
        {"folder", [](FakeFiles& files) { files.addFile(mountPoint + "/x"); }},
        {"file", [](FakeFiles& files) { files.addFile(mountPoint); }},
        {"link into nowhere", [](FakeFiles& files) { files.addLink(mountPoint, "/nowhere"); }},
        {"link to a folder", [](FakeFiles& files) { files.addLink(mountPoint, "/Users/me"); }}};
    for (const auto& [name, take] : rows) {
        SCOPED_TRACE(name);
        take(system.files);
        EXPECT_EQ(extract(), Texts{"fail"});
        EXPECT_TRUE(system.tasks.launches.empty());
        EXPECT_TRUE(system.tasks.detached.empty());
        EXPECT_FALSE(system.files.has(mountPoint));
    }
    EXPECT_TRUE(system.files.has("/Users/me"));
}

TEST_F(DiskImageUnarchiverTest, FoldersThatCannotBeMadeFailTheExtraction) {
    system.files.failAt(FakeFiles::Operation::Create, extracted);
    EXPECT_EQ(extract(), Texts{"fail"});
    EXPECT_EQ(system.tasks.detached.size(), 1U);
    system.files.removeTree(mountPoint);
    system.files.failAt(FakeFiles::Operation::Create, mountPoint);
    EXPECT_EQ(extract(), Texts{"fail"});
    EXPECT_EQ(system.tasks.launches.size(), 1U) << "attached without a mount point";
    EXPECT_EQ(system.tasks.detached.size(), 1U);
}

// Deliberate in the program: one failure notice for each entry that fails.
TEST_F(DiskImageUnarchiverTest, TwoFailingEntriesGiveTwoFailuresAndNoSuccess) {
    for (const char* name : {"/Tolvix.app", "/.hidden"}) {
        system.files.failAt(FakeFiles::Operation::Copy, mountPoint + name);
    }
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

TEST_F(DiskImageUnarchiverTest, WithoutADelegateTheWorkIsDoneAllTheSame) {
    TXUnarchiver::unarchiverForPath(archive)->start();
    system.threads.runAll();
    EXPECT_TRUE(extractedHolds("Tolvix.app"));
}
