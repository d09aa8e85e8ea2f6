#include "platform/linux/LinuxWorkspace.h"

#include "platform/posix/PosixFileChanges.h"
#include "platform/posix/PosixTasks.h"
#include "platform/qtcore/QtBundles.h"
#include "tests/contract/FolderWorld.h"
#include "tests/contract/WorkspaceContract.h"
#include "tests/support/FakeWorkspace.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <functional>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <thread>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using foundation::URL;
using platform::LinuxWorkspace;
using platform::RunningApplication;
using tests::TestEnvironment;
using tests::TestFolder;

bool becomesTrue(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

std::string information(const std::string& identifier, const std::string& executable = "run") {
    return "<plist><dict><key>CFBundleIdentifier</key><string>" + identifier +
           "</string><key>CFBundleExecutable</key><string>" + executable + "</string></dict></plist>";
}

// A child of the test that ends with it.
class Child {
public:
    explicit Child(std::vector<std::string> command, const std::string& folder = "/") {
        std::vector<char*> arguments;
        for (std::string& word : command)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        processId_ = ::fork();
        if (processId_ == 0)
            ::_exit(::chdir(folder.c_str()) == 0 ? ::execv(arguments[0], arguments.data()) : 127);
    }
    ~Child() {
        ::kill(processId_, SIGKILL);
        ::waitpid(processId_, nullptr, 0);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    int processId() const { return processId_; }

private:
    pid_t processId_ = -1;
};

class Workspace : public ::testing::Test {
protected:
    bool isRunning(int processId, const std::string& identifier = "example.app") {
        return find(processId, identifier).has_value();
    }
    std::optional<RunningApplication> find(int processId, const std::string& identifier = "example.app") {
        for (const RunningApplication& application : workspace.runningApplications(identifier))
            if (application.processId == processId)
                return application;
        return std::nullopt;
    }
    // A script of the bundle whose shell waits without any further process until it is killed; its path.
    std::string addWaitingScript(const std::string& name, const std::string& firstLine,
                                 const std::string& preparation = {}) {
        return folder.write(
            "My App.app/Contents/MacOS/" + name,
            firstLine + '\n' + preparation + "while :; do read line < '" + folder.path("never") + "'; done\n", true);
    }
    void SetUp() override {
        ASSERT_EQ(::mkfifo(folder.path("never").c_str(), 0600), 0);
        folder.write("My App.app/Contents/Info.plist", information("example.app"));
    }

    std::string copyProgram(const std::string& name) {
        const std::filesystem::path place = folder.path(name);
        std::filesystem::create_directories(place.parent_path());
        std::filesystem::copy_file("/bin/sleep", place);
        return place;
    }

    TestFolder folder;
    std::string app = folder.path("My App.app");
    platform::QtBundles bundles{{"en"}, folder.path()};
    platform::PosixTasks tasks;
    platform::PosixFileChanges changes{platform::ProtectedPaths{}};
    std::vector<std::string> shown;
    bool canShow = true;
    LinuxWorkspace workspace{bundles, tasks, changes, [this](const std::string& uri) {
                                 shown.push_back(uri);
                                 return canShow;
                             }};
};

TEST_F(Workspace, FindsProgramsAndScriptsOfTheBundle) {
    const std::string program = copyProgram("My App.app/Contents/MacOS/run");
    std::filesystem::copy_file("/bin/sh", folder.path("shell"));
    const Child compiled({program, "600"});
    const Child script({addWaitingScript("script", "#!/bin/sh -e")});
    const Child relative({"./MacOS/script"}, app + "/Contents");
    const Child wrapped({addWaitingScript("wrapped", "#!/usr/bin/env sh")});
    const Child kept({addWaitingScript("kept", "#!" + folder.path("shell"))});
    for (const Child* child : {&compiled, &script, &relative, &wrapped, &kept})
        EXPECT_TRUE(becomesTrue([&] { return isRunning(child->processId()); }));
    std::filesystem::remove(program);
    EXPECT_TRUE(isRunning(compiled.processId())) << "a deleted program still runs";
    std::filesystem::remove(folder.path("shell"));
    std::filesystem::copy_file("/bin/sh", folder.path("shell"));
    EXPECT_TRUE(isRunning(kept.processId())) << "with an interpreter that was updated since";
}

TEST_F(Workspace, LeavesOtherProgramsOut) {
    const std::string inner = "My App.app/Contents/Helpers/Agent.app/Contents";
    folder.write(inner + "/Info.plist", information("example.agent"));
    folder.write("Broken.app/Contents/Info.plist", "nothing");
    const Child viewer({"/usr/bin/tail", "-f", addWaitingScript("script", "#!/bin/sh")});
    const Child agent({copyProgram(inner + "/MacOS/run"), "600"});
    const Child broken({copyProgram("Broken.app/Contents/MacOS/run"), "600"});
    const Child ended({copyProgram("My App.app/Contents/MacOS/run"), "0"});
    EXPECT_TRUE(becomesTrue([&] { return isRunning(agent.processId(), "example.agent"); }));
    EXPECT_TRUE(becomesTrue([&] { return !isRunning(ended.processId()); })) << "ended, though nobody waited for it";
    for (const Child* child : {&viewer, &agent, &broken})
        EXPECT_FALSE(isRunning(child->processId()));
}

TEST_F(Workspace, AsksProgramsToQuit) {
    const Child obedient({copyProgram("My App.app/Contents/MacOS/run"), "600"});
    const Child stubborn(
        {addWaitingScript("stubborn", "#!/bin/sh", "trap '' TERM\necho > '" + folder.path("ready") + "'\n")});
    ASSERT_TRUE(becomesTrue([&] { return std::filesystem::exists(folder.path("ready")); }));
    ASSERT_TRUE(becomesTrue([&] { return isRunning(obedient.processId()); }));

    auto other = find(obedient.processId()).value();
    ++other.startTime;
    workspace.terminate(other);
    EXPECT_TRUE(isRunning(obedient.processId())) << "a later process with the same number";
    workspace.terminate(*find(obedient.processId()));
    EXPECT_TRUE(becomesTrue([&] { return !isRunning(obedient.processId()); }));

    const auto start = std::chrono::steady_clock::now();
    workspace.terminate(*find(stubborn.processId()));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(40)) << "or asking would spin";
    EXPECT_TRUE(isRunning(stubborn.processId()));
}

// Refuses process descriptors to the calling thread, as some containers do.
void refuseProcessDescriptors() {
    std::array<sock_filter, 4> program{sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                                       sock_filter BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_pidfd_open, 0, 1),
                                       sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
                                       sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    const sock_fprog filter{program.size(), program.data()};
    ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
    if (::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0)
        GTEST_SKIP() << "no filters here";
}

TEST_F(Workspace, AsksToQuitWithoutProcessDescriptors) {
    const Child child({addWaitingScript("plain", "#!/bin/sh")});
    ASSERT_TRUE(becomesTrue([&] { return isRunning(child.processId()); }));
    std::thread([&] {
        refuseProcessDescriptors();
        auto other = find(child.processId()).value();
        ++other.startTime;
        workspace.terminate(other);
        EXPECT_TRUE(isRunning(child.processId())) << "a later process with the same number";
        workspace.terminate(find(child.processId()).value());
    }).join();
    EXPECT_TRUE(becomesTrue([&] { return !isRunning(child.processId()); }));
}

TEST_F(Workspace, LaunchesABundleOnce) {
    folder.write("My App.app/Contents/MacOS/run",
                 "#!/bin/sh\necho \"$0 $# $PWD\" >> '" + folder.path("launches") + "'\nwhile ! [ -e '" +
                     folder.path("stop") + "' ]; do sleep 0.05; done\n",
                 true);
    ASSERT_TRUE(workspace.launchApplication(app));
    const std::string expected = app + "/Contents/MacOS/run 0 /\n";
    EXPECT_TRUE(becomesTrue([&] { return folder.read("launches") == expected; }));
    EXPECT_TRUE(workspace.launchApplication(app)) << "it runs already";
    std::filesystem::create_directory_symlink(app, folder.path("Link.app"));
    EXPECT_TRUE(workspace.launchApplication(folder.path("Link.app"))) << "under another name";
    EXPECT_EQ(folder.read("launches"), expected);
    folder.write("stop", "");
    EXPECT_TRUE(becomesTrue([&] { return workspace.runningApplications("example.app").empty(); }));
}

TEST_F(Workspace, RefusesBundlesThatCannotBeLaunched) {
    folder.write("outside", "#!/bin/sh\n", true);
    folder.write("My App.app/Contents/MacOS/plain", "#!/bin/sh\n");
    for (const char* name : {"missing", "plain", "../../../outside", "", ".", ".."}) {
        folder.write("My App.app/Contents/Info.plist", information("example.app", name));
        EXPECT_FALSE(workspace.launchApplication(app)) << name;
    }
}

// A desktop opener of the test's own, which notes what it was given.
class Opener : public Workspace {
protected:
    void SetUp() override {
        Workspace::SetUp();
        folder.write("bin/xdg-open",
                     "#!/bin/sh\nprintf '%s|' \"$#\" \"$@\" > '" + folder.path("opening") + "'\nmv '" +
                         folder.path("opening") + "' '" + folder.path("opened") + "'\n",
                     true);
    }
    std::string opened() {
        EXPECT_TRUE(becomesTrue([&] { return std::filesystem::exists(folder.path("opened")); }));
        std::string text = folder.read("opened");
        std::filesystem::remove(folder.path("opened"));
        return text;
    }
    bool open(const std::string& url) { return workspace.openURL(URL::withString(url).value()); }

    TestEnvironment environment{{"PATH", "bin:/nowhere:" + folder.path("bin") + ":/usr/bin:/bin"}};
};

TEST_F(Opener, OpensURLsWithoutAShell) {
    const std::string url = "https://host/?a=1&b=$(reboot);'x'";
    ASSERT_TRUE(open(url));
    EXPECT_EQ(opened(), "1|" + url + '|');
    EXPECT_FALSE(open("--help"));
    EXPECT_FALSE(open(""));

    const std::filesystem::path previous = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    for (const char* path : {"bin:", "", ":.:bin", "/nowhere"}) {
        const TestEnvironment relative{{"PATH", path}};
        EXPECT_FALSE(open(url)) << "looked up in " << path;
    }
    std::filesystem::current_path(previous);
}

TEST_F(Opener, StandsInForAFileManager) {
    const std::string file = folder.write("some folder/a file é", "");
    EXPECT_TRUE(workspace.selectFile(file, ""));
    EXPECT_EQ(shown, std::vector{"file://" + folder.path("some%20folder/a%20file%20%C3%A9")});
    EXPECT_FALSE(std::filesystem::exists(folder.path("opened")));

    canShow = false;
    EXPECT_TRUE(workspace.selectFile(file, ""));
    EXPECT_EQ(opened(), "1|" + folder.path("some folder") + '|');

    for (const char* ending : {"exit 3", "kill -9 $$", "exec sleep 30 >/dev/null 2>&1"}) {
        folder.write("bin/xdg-open", std::string("#!/bin/sh\n") + ending + '\n', true);
        EXPECT_FALSE(workspace.selectFile(file, "")) << ending;
    }
}

} // namespace

namespace tests {

namespace {

struct LinuxWorld : FolderWorld {
    platform::QtBundles bundles{{"en"}, place.path()};
    platform::PosixTasks tasks;
    platform::PosixFileChanges changes{platform::ProtectedPaths{}};
    LinuxWorkspace workspace{bundles, tasks, changes, [](const std::string& /*uri*/) { return true; }};
};

struct FakeWorld : FakeFolderWorld {
    FakeWorkspace workspace{files};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, WorkspaceContract, LinuxWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WorkspaceContract, FakeWorld);

} // namespace

} // namespace tests
